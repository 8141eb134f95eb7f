/* The data tree: leaves keyed by the canonical text of their path. A leaf is
 * never removed from the table: a deleted one is marked, so that its index
 * stays valid for the streams that remember what they sent of it. */
#ifndef SERVICE_TREE_H
#define SERVICE_TREE_H

#include <stddef.h>
#include <stdint.h>

#include "path_store.h"
#include "value.h"

struct leaf {
  char* text; /* canonical path text */
  void* path; /* the same path, for matching */
  void* wire; /* the same path encoded once, made on first use */
  struct value value;
  uint64_t version; /* the tree's version of the leaf's last change */
  int deleted;
  int config; /* a configuration leaf (a `config` element on its path) */
};

struct tree {
  struct leaf* leaves;
  size_t count;
  size_t cap;
  struct path_store paths;
  uint64_t version; /* counts every change */
  int interfaces;
  uint64_t ticks;
};

/* The sample: `interfaces` interfaces with counters, and a system subtree.
 * 1, or 0 when memory runs out (the tree is then freed). */
int tree_init(struct tree* tree, int interfaces);
void tree_free(struct tree* tree);
/* Moves the counters and the clock leaf on by one tick. */
void tree_tick(struct tree* tree);
/* The leaf at this path text, deleted or not, or NULL. */
struct leaf* tree_find(struct tree* tree, const char* text);
/* Sets the leaf at `path` (created when absent or deleted) to a copy of
 * value; its version moves only when the value changes. The leaf, or NULL
 * when memory runs out. */
struct leaf* tree_put(struct tree* tree, void* path, const struct value* value);
void tree_delete(struct tree* tree, struct leaf* leaf);
/* The leaf's wire path (made on first use), or NULL when memory runs out. */
void* tree_wire_path(struct leaf* leaf);
/* The canonical text of a path, malloc'ed; NULL when memory runs out. */
char* path_text(void* path);

#endif
