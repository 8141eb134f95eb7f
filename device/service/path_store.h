/* Path messages the module keeps for matching (the data tree's leaves, a
 * subscription's patterns): the update paths of a Get context's response,
 * which is never serialized. */
#ifndef SERVICE_PATH_STORE_H
#define SERVICE_PATH_STORE_H

struct path_store {
  void* ctx;
  void* notification;
};

/* 1, or 0 when memory runs out. */
int path_store_init(struct path_store* store);
/* A new empty Path of the store. */
void* path_store_add(struct path_store* store);
/* A new Path read from its text, or NULL when the text is no path. */
void* path_store_parse(struct path_store* store, const char* text);
/* A new Path: prefix (may be NULL) joined with path. */
void* path_store_join(struct path_store* store, void* prefix, void* path);
void path_store_free(struct path_store* store);

#endif
