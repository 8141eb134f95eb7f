/* The users the module accepts: user:password pairs. */
#ifndef SERVICE_USERS_H
#define SERVICE_USERS_H

#include <stddef.h>

struct users {
  char** pairs; /* "user:password" */
  size_t count;
};

/* Adds one "user:password"; 1, or 0 without a colon or on no memory. */
int users_add(struct users* users, const char* pair);
/* Adds every line of a file; 1, or 0 when it cannot be read or a line is bad. */
int users_load(struct users* users, const char* file);
int users_check(const struct users* users, const char* user, const char* password);
void users_free(struct users* users);

#endif
