/* The exchanges the example plays, one per message family. Each returns 0 on
 * success and prints what it did. */
#ifndef MGMTMSG_EXAMPLES_EXCHANGES_H
#define MGMTMSG_EXAMPLES_EXCHANGES_H

int RunGnmiGet(void);
int RunGnmiSubscribe(void);

/* The south IPC and dial-in exchanges also write the bytes they send into
 * the directory frameDir (south_msg.frame, subs_reply.bin) unless it is
 * NULL; their result has bit 1 set when the exchange failed, and the bit
 * FRAME_NOT_WRITTEN (frame_file.h) when only the file could not be
 * written. */
int RunSouthIpc(const char* frameDir);
int RunDialin(const char* frameDir);

#endif
