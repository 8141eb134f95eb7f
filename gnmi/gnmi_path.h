/** @defgroup gnmi_path_text Paths as text, copied, joined and matched
 * @brief mgmtmsg: paths for C callers beyond the element and key entry points
 * (`gnmi/gnmi_path.h`).
 *
 * Every handle here is a Path handle as the entry points of @ref gnmi hand
 * them out (their conventions 1 to 3, 8 and 10 hold); a handle into a request
 * is read-only and may only be a source (`from`, `pattern`, `path` of the
 * readers). A handle to a message of another type, or a context, is refused:
 * the call returns 0 and changes nothing. That is all that is checked: a null
 * handle, a freed one or one that designates no object of the library is
 * undefined, as everywhere.
 *
 * The text form, after the published gNMI path-string convention:
 *  1. `/` separates elements; an element is a name followed by any number of
 *     `[key=value]`. On input a leading `/` is optional and one trailing `/`
 *     is ignored; the empty text and `/` alone are the empty path. Keys come
 *     in any order; a key given twice is an error.
 *  2. `X:/` at the very start, where X (read as an element name is) holds no
 *     unescaped `/` or `[`, gives the origin X (`openconfig:/interfaces`,
 *     `rfc7951:/`). Without it the origin is empty:
 *     `/openconfig-interfaces:interfaces` has none, its first element's name
 *     holds the colon; so has `:/a`, whose X is empty: its elements are `:`
 *     and `a`. The target is never part of the text.
 *  3. A backslash makes the next byte literal, anywhere. Inside a key value
 *     only an unescaped `]` ends it: `[name=Ethernet1/2/3]`, `[k=a=b]` and
 *     `[name=[foo]` are values as they stand; the first unescaped `=` ends the
 *     key name (`[baz==bat]` is baz = `=bat`). An empty value (`[k=]`) is
 *     allowed.
 *  4. Errors: an empty element name (`/a//b`, `/a/[k=v]`), a key without `=`,
 *     an empty key name, `[` or unescaped whitespace in a key name, unescaped
 *     whitespace in an element name or origin, `]` outside a key, anything but
 *     `/` or `[` after a key, an unterminated key, a trailing backslash.
 *     Whitespace is space, tab, newline, vertical tab, form feed and carriage
 *     return.
 *  5. Output is canonical: it starts with `/` (or `origin:/`), keys follow in
 *     bytewise order of their names, and a backslash escapes, in the origin
 *     and element names, `\` `/` `[` `]`; in key names `\` `=` `[` `]`; in
 *     key values `\` and `]`; whitespace in origins, names and key names.
 *     Every path whose element and key names are not empty reads back from
 *     its text unchanged, and writes the same text again.
 *  6. Memory exhaustion is std::bad_alloc leaving the call, with the
 *     destination path as it was and nothing left allocated: the new content
 *     is built aside and swapped in without allocating. When the destination
 *     lives in a reset response (@ref gnmi_stream), the content is built in
 *     that response's region, and what a failed call built there is freed by
 *     the next reset. Off such a region, the one exception is
 *     the message runtime's key table, which cannot recover from a failure to
 *     grow (made at an element's first key, doubled at its 6th, 12th, 24th
 *     ...): when adding such a key fails, the path is still as it was, but
 *     the element being built is abandoned with the few blocks it holds,
 *     never freed.
 * @{
 */
/** @file
 * Paths as text, copied, joined and matched: see @ref gnmi_path_text. */
#ifndef MGMTMSG_GNMI_PATH_H
#define MGMTMSG_GNMI_PATH_H

#include <stdint.h>

#include "gnmi_ex.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Parses `len` bytes at `text` (NULL with len 0 is the empty text) into
 * `path`, replacing its origin and elements and clearing its deprecated
 * string elements; the target is kept.
 * @return 1, `*errorAt` left alone; 0 for a handle that is not a Path,
 * nothing written; or 0 on bad text (convention 4), with `path` exactly as it
 * was and, when errorAt is not NULL, `*errorAt` set to the byte offset where
 * the text went wrong (at most len: len when the text ends too early). NULL
 * text with a non-zero len throws std::logic_error, `path` unchanged. */
MGMTMSG_API int GNMI_Path_FromString(void* path, const char* text, uint32_t len, uint32_t* errorAt);

/** Writes the canonical text of `path` (convention 5) into `buf`, as snprintf
 * does: never more than cap bytes (none at all when cap is 0, buf then
 * untouched and allowed to be NULL), NUL-terminated whenever cap > 0, cut
 * short when it does not fit.
 * @return the length of the whole text without its NUL, at most UINT32_MAX
 * (a longer text is cut and its length given as UINT32_MAX); 0 for a handle
 * that is not a Path, nothing written. */
MGMTMSG_API uint32_t GNMI_Path_ToString(void* path, char* buf, uint32_t cap);

/** Makes `to` an independent copy of `from`: origin, target, elements with
 * their keys; nothing else of `to` is kept (the deprecated string elements
 * are not copied).
 * @return 1; 0 when either handle is not a Path, nothing changed. */
MGMTMSG_API int GNMI_Path_CopyFrom(void* to, void* from);

/** Appends copies of the elements of `from`, with their keys, to those of
 * `to` (`from` may be `to`); origins and targets are left alone. A prefix
 * joined with a path: CopyFrom(out, prefix), then AppendElems(out, path).
 * @return 1; 0 when either handle is not a Path, nothing changed. */
MGMTMSG_API int GNMI_Path_AppendElems(void* to, void* from);

/** @return 1 when `path` lies in the subtree that `pattern` names, else 0
 * (and 0 when either handle is not a Path). Origins must name the same tree:
 * equal, or one empty and the other "openconfig"; targets are ignored.
 * Elements are compared in order: `...` matches any number of elements, none
 * included, and its keys, if any, are ignored; any other pattern element
 * matches an element of the same name (of any name when the pattern's is `*`)
 * having every key of the pattern element with an equal value, or any value
 * where the pattern's value is `*` (keys that the pattern element lacks are
 * ignored). `path` may go on below the end of the pattern. */
MGMTMSG_API int GNMI_Path_Covers(void* pattern, void* path);

#ifdef __cplusplus
}
#endif

/** @} */
#endif
