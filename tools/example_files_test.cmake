# Runs the example with --write-frames, then mgmtmsg-dump on every file it
# wrote; fails when a file does not decode or is one the test does not know.
# Variables: EMULATOR (empty on a native build), EXAMPLE, DUMP, DIR.
file(REMOVE_RECURSE ${DIR})
file(MAKE_DIRECTORY ${DIR})
# The example's own verdict is not this test's business: only what it wrote.
execute_process(COMMAND ${EMULATOR} ${EXAMPLE} --write-frames ${DIR} OUTPUT_QUIET ERROR_QUIET)

# dump(FILE EXPECTED ARGS...): the tool decodes FILE and prints EXPECTED.
set(decoded "")
function(dump file expected)
  execute_process(COMMAND ${EMULATOR} ${DUMP} ${ARGN} ${DIR}/${file}
                  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0 OR NOT out MATCHES "${expected}")
    message(FATAL_ERROR "mgmtmsg-dump ${ARGN} ${file}: exit ${rc}\n${out}${err}")
  endif()
  set(decoded ${decoded} ${file} PARENT_SCOPE)
endfunction()

dump(south_msg.frame "\nmsg_type: MSGTYPE_CLIENT_RPC\n")
dump(subs_reply.bin "\nresponse_code: \"ok\"\n" --type quorix_dialin.SubsReply)

file(GLOB written RELATIVE ${DIR} ${DIR}/*)
list(REMOVE_ITEM written ${decoded})
if(written)
  message(FATAL_ERROR "the example wrote files this test does not decode: ${written}")
endif()
