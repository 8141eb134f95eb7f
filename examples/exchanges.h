/* The exchanges the example plays, one per message family. Each returns 0 on
 * success and prints what it did. */
#ifndef MGMTMSG_EXAMPLES_EXCHANGES_H
#define MGMTMSG_EXAMPLES_EXCHANGES_H

int RunGnmiGet(void);

#endif
