#include "users.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

int users_add(struct users* users, const char* pair) {
  char** grown;
  char* copy;
  if (strchr(pair, ':') == NULL || pair[0] == ':') return 0;
  grown = realloc(users->pairs, (users->count + 1) * sizeof *grown);
  if (grown == NULL) return 0;
  users->pairs = grown;
  copy = malloc(strlen(pair) + 1);
  if (copy == NULL) return 0;
  strcpy(copy, pair);
  users->pairs[users->count++] = copy;
  return 1;
}

int users_load(struct users* users, const char* file) {
  char line[512];
  int ok = 1;
  FILE* in = fopen(file, "r");
  if (in == NULL) return 0;
  while (ok && fgets(line, sizeof line, in) != NULL) {
    line[strcspn(line, "\r\n")] = '\0';
    if (line[0] != '\0' && line[0] != '#') ok = users_add(users, line);
  }
  fclose(in);
  return ok;
}

int users_check(const struct users* users, const char* user, const char* password) {
  size_t i, userLen = strlen(user);
  for (i = 0; i < users->count; i++) {
    const char* pair = users->pairs[i];
    if (strncmp(pair, user, userLen) == 0 && pair[userLen] == ':' &&
        strcmp(pair + userLen + 1, password) == 0) {
      return 1;
    }
  }
  return 0;
}

void users_free(struct users* users) {
  size_t i;
  for (i = 0; i < users->count; i++) free(users->pairs[i]);
  free(users->pairs);
  users->pairs = NULL;
  users->count = 0;
}
