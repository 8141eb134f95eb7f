#include "tree.h"

#include "clock.h"

#include <gnmi/gnmi_path.h>
#include <gnmi/gnmi_wire.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

char* path_text(void* path) {
  uint32_t len = GNMI_Path_ToString(path, NULL, 0);
  char* text = malloc((size_t)len + 1);
  if (text != NULL) GNMI_Path_ToString(path, text, len + 1);
  return text;
}

void* tree_wire_path(struct leaf* leaf) {
  if (leaf->wire == NULL) leaf->wire = GNMI_WirePath_Make(leaf->path);
  return leaf->wire;
}

struct leaf* tree_find(struct tree* tree, const char* text) {
  size_t i;
  for (i = 0; i < tree->count; i++) {
    if (strcmp(tree->leaves[i].text, text) == 0) return &tree->leaves[i];
  }
  return NULL;
}

static struct leaf* add_leaf(struct tree* tree, char* text) {
  struct leaf* leaf;
  if (tree->count == tree->cap) {
    size_t cap = tree->cap ? tree->cap * 2 : 64;
    struct leaf* grown = realloc(tree->leaves, cap * sizeof *grown);
    if (grown == NULL) return NULL;
    tree->leaves = grown;
    tree->cap = cap;
  }
  leaf = &tree->leaves[tree->count];
  memset(leaf, 0, sizeof *leaf);
  leaf->path = path_store_parse(&tree->paths, text);
  if (leaf->path == NULL) return NULL;
  leaf->text = text;
  leaf->deleted = 1;
  leaf->config = strstr(text, "/config/") != NULL;
  tree->count++;
  return leaf;
}

struct leaf* tree_put(struct tree* tree, void* path, const struct value* value) {
  char* text = path_text(path);
  struct leaf* leaf = text == NULL ? NULL : tree_find(tree, text);
  struct value copy;
  if (leaf != NULL) {
    free(text);
  } else if (text == NULL || (leaf = add_leaf(tree, text)) == NULL) {
    free(text);
    return NULL;
  }
  if (!leaf->deleted && value_equal(&leaf->value, value)) return leaf;
  if (!value_copy(&copy, value)) return NULL;
  value_clear(&leaf->value);
  leaf->value = copy;
  leaf->deleted = 0;
  leaf->version = ++tree->version;
  return leaf;
}

void tree_delete(struct tree* tree, struct leaf* leaf) {
  if (leaf->deleted) return;
  value_clear(&leaf->value);
  leaf->deleted = 1;
  leaf->version = ++tree->version;
}

/* Puts a leaf given by text into the sample. */
static int seed(struct tree* tree, const char* text, struct value value) {
  void* path = path_store_parse(&tree->paths, text);
  return path != NULL && tree_put(tree, path, &value) != NULL;
}

static struct value uint_value(uint64_t u) {
  struct value value = {VALUE_UINT, 0, 0, 0, NULL};
  value.u = u;
  return value;
}

static struct value text_value(char* s) {
  struct value value = {VALUE_STRING, 0, 0, 0, NULL};
  value.s = s;
  return value;
}

static const char* const kCounters[] = {"in-octets", "out-octets", "in-pkts", "out-pkts"};
#define COUNTERS (sizeof kCounters / sizeof kCounters[0])

static int seed_interface(struct tree* tree, int index) {
  char base[64], text[160], description[32];
  struct value enabled = {VALUE_BOOL, 0, 0, 1, NULL};
  size_t i;
  int ok;
  snprintf(base, sizeof base, "/interfaces/interface[name=eth%d]", index);
  snprintf(description, sizeof description, "port eth%d", index);
  snprintf(text, sizeof text, "%s/config/description", base);
  ok = seed(tree, text, text_value(description));
  snprintf(text, sizeof text, "%s/config/mtu", base);
  ok = ok && seed(tree, text, uint_value(1500));
  snprintf(text, sizeof text, "%s/config/enabled", base);
  ok = ok && seed(tree, text, enabled);
  snprintf(text, sizeof text, "%s/state/oper-status", base);
  ok = ok && seed(tree, text, text_value("UP"));
  for (i = 0; ok && i < COUNTERS; i++) {
    snprintf(text, sizeof text, "%s/state/counters/%s", base, kCounters[i]);
    ok = seed(tree, text, uint_value(0));
  }
  return ok;
}

static void datetime_text(char* out, size_t cap) {
  time_t now = time(NULL);
  struct tm utc;
  gmtime_r(&now, &utc);
  strftime(out, cap, "%Y-%m-%dT%H:%M:%SZ", &utc);
}

int tree_init(struct tree* tree, int interfaces) {
  char datetime[32];
  int i, ok;
  memset(tree, 0, sizeof *tree);
  tree->interfaces = interfaces;
  if (!path_store_init(&tree->paths)) return 0;
  datetime_text(datetime, sizeof datetime);
  ok = seed(tree, "/system/config/hostname", text_value("mgmtmsg-device")) &&
       seed(tree, "/system/state/boot-time", uint_value(realtime_ns())) &&
       seed(tree, "/system/state/current-datetime", text_value(datetime));
  for (i = 0; ok && i < interfaces; i++) ok = seed_interface(tree, i);
  if (!ok) tree_free(tree);
  return ok;
}

void tree_tick(struct tree* tree) {
  char datetime[32];
  struct value clock = {VALUE_STRING, 0, 0, 0, NULL};
  struct leaf* leaf;
  size_t i;
  tree->ticks++;
  for (i = 0; i < tree->count; i++) {
    leaf = &tree->leaves[i];
    if (!leaf->deleted && leaf->value.kind == VALUE_UINT && strstr(leaf->text, "/counters/")) {
      leaf->value.u += 64u * (i % 7 + 1);
      leaf->version = ++tree->version;
    }
  }
  datetime_text(datetime, sizeof datetime);
  clock.s = datetime;
  leaf = tree_find(tree, "/system/state/current-datetime");
  if (leaf != NULL && !leaf->deleted) tree_put(tree, leaf->path, &clock);
}

void tree_free(struct tree* tree) {
  size_t i;
  for (i = 0; i < tree->count; i++) {
    free(tree->leaves[i].text);
    GNMI_WirePath_Free(tree->leaves[i].wire);
    value_clear(&tree->leaves[i].value);
  }
  free(tree->leaves);
  path_store_free(&tree->paths);
  memset(tree, 0, sizeof *tree);
}
