#include "json_tree.h"

#include <gnmi/gnmi_ex.h>
#include <stdlib.h>
#include <string.h>

static void* elem(const struct leaf* leaf, int depth) {
  return GNMI_Path_GetPathElem(leaf->path, depth);
}

static int is_last(const struct leaf* leaf, int depth) {
  return GNMI_Path_PathElemSizeof(leaf->path) == depth + 1;
}

/* Whether two elements have the same name, or the same name and keys. */
static int same_elem(void* a, void* b, int keys) {
  int i, count = GNMI_PathElem_KeySizeof(a);
  if (strcmp(GNMI_PathElem_GetName(a), GNMI_PathElem_GetName(b)) != 0) return 0;
  if (!keys) return 1;
  if (count != GNMI_PathElem_KeySizeof(b)) return 0;
  for (i = 0; i < count; i++) {
    const char *ka, *va, *kb, *vb;
    GNMI_PathElem_GetKey(a, i, &ka, &va);
    GNMI_PathElem_GetKey(b, i, &kb, &vb);
    if (strcmp(ka, kb) != 0 || strcmp(va, vb) != 0) return 0;
  }
  return 1;
}

/* The end of the run of leaves from `from` whose element at depth matches. */
static size_t run_end(const struct leaf** leaves, size_t from, size_t count, int depth, int keys) {
  size_t end = from + 1;
  while (end < count && same_elem(elem(leaves[from], depth), elem(leaves[end], depth), keys)) {
    end++;
  }
  return end;
}

static int append_text(struct buffer* out, const char* text) {
  return buffer_append(out, text, strlen(text));
}

static int append_string(struct buffer* out, const char* text) {
  struct value value = {VALUE_STRING, 0, 0, 0, NULL};
  value.s = (char*)text;
  return json_format(&value, 0, out);
}

static int members(const struct leaf** leaves, size_t count, int depth, int ietf,
                   struct buffer* out);

/* One entry of a keyed list: its keys, then its members. */
static int list_entry(const struct leaf** leaves, size_t count, int depth, int ietf,
                      struct buffer* out) {
  void* first = elem(leaves[0], depth);
  int i, keys = GNMI_PathElem_KeySizeof(first), ok = append_text(out, "{");
  for (i = 0; ok && i < keys; i++) {
    const char *key, *value;
    GNMI_PathElem_GetKey(first, i, &key, &value);
    ok = (i == 0 || append_text(out, ",")) && append_string(out, key) && append_text(out, ":") &&
         append_string(out, value);
  }
  if (ok && !is_last(leaves[0], depth)) {
    ok = (keys == 0 || append_text(out, ",")) && members(leaves, count, depth + 1, ietf, out);
  }
  return ok && append_text(out, "}");
}

/* The members named by the elements at depth, without braces. */
static int members(const struct leaf** leaves, size_t count, int depth, int ietf,
                   struct buffer* out) {
  size_t at = 0, end, entry;
  int ok = 1;
  while (ok && at < count) {
    void* first = elem(leaves[at], depth);
    end = run_end(leaves, at, count, depth, 0);
    ok = (at == 0 || append_text(out, ",")) && append_string(out, GNMI_PathElem_GetName(first)) &&
         append_text(out, ":");
    if (ok && GNMI_PathElem_KeySizeof(first) > 0) {
      ok = append_text(out, "[");
      for (entry = at; ok && entry < end;) {
        size_t next = run_end(leaves, entry, end, depth, 1);
        ok = (entry == at || append_text(out, ",")) &&
             list_entry(leaves + entry, next - entry, depth, ietf, out);
        entry = next;
      }
      ok = ok && append_text(out, "]");
    } else if (ok && is_last(leaves[at], depth)) {
      ok = json_format(&leaves[at]->value, ietf, out);
    } else if (ok) {
      ok = append_text(out, "{") && members(leaves + at, end - at, depth + 1, ietf, out) &&
           append_text(out, "}");
    }
    at = end;
  }
  return ok;
}

static int by_text(const void* a, const void* b) {
  return strcmp((*(const struct leaf* const*)a)->text, (*(const struct leaf* const*)b)->text);
}

int json_subtree(const struct leaf** leaves, size_t count, int depth, int ietf,
                 struct buffer* out) {
  qsort((void*)leaves, count, sizeof(const struct leaf*), by_text);
  return append_text(out, "{") && members(leaves, count, depth, ietf, out) && append_text(out, "}");
}
