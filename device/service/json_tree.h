/* A subtree of the data tree as one JSON value, for a Get of a container in
 * JSON or JSON_IETF: containers are objects, a keyed list is an array of
 * objects that hold their keys, leaves are their values. */
#ifndef SERVICE_JSON_TREE_H
#define SERVICE_JSON_TREE_H

#include <stddef.h>

#include "buffer.h"
#include "tree.h"

/* Writes the object of the leaves (all below the same `depth` elements of
 * their paths). Sorts `leaves`. 1, or 0 when memory runs out. */
int json_subtree(const struct leaf** leaves, size_t count, int depth, int ietf, struct buffer* out);

#endif
