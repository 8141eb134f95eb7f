#include "sample_tree.h"

#include <sstream>
#include <string>

namespace bench {

gnmi::Path ParsePath(const std::string& text) {
  gnmi::Path path;
  std::stringstream parts(text);
  std::string part;
  while (std::getline(parts, part, '/')) {
    if (part.empty()) continue;
    gnmi::PathElem* elem = path.add_elem();
    size_t open = part.find('[');
    elem->set_name(part.substr(0, open));
    while (open != std::string::npos) {
      size_t eq = part.find('=', open), close = part.find(']', open);
      (*elem->mutable_key())[part.substr(open + 1, eq - open - 1)] =
          part.substr(eq + 1, close - eq - 1);
      open = part.find('[', close);
    }
  }
  return path;
}

bool Covers(const gnmi::Path& pattern, const gnmi::Path& path) {
  if (pattern.elem_size() > path.elem_size()) return false;
  for (int i = 0; i < pattern.elem_size(); i++) {
    const gnmi::PathElem& want = pattern.elem(i);
    const gnmi::PathElem& have = path.elem(i);
    if (want.name() != have.name()) return false;
    for (const auto& [key, value] : want.key()) {
      auto found = have.key().find(key);
      if (found == have.key().end() || found->second != value) return false;
    }
  }
  return true;
}

std::vector<Leaf> SampleTree(int interfaces) {
  std::vector<Leaf> tree;
  auto add = [&tree](const std::string& text, auto set) {
    Leaf leaf{ParsePath(text), {}};
    set(&leaf.value);
    tree.push_back(std::move(leaf));
  };
  add("/system/config/hostname", [](gnmi::TypedValue* v) { v->set_string_val("mgmtmsg-device"); });
  add("/system/state/boot-time", [](gnmi::TypedValue* v) { v->set_uint_val(1); });
  add("/system/state/current-datetime",
      [](gnmi::TypedValue* v) { v->set_string_val("2026-01-01T00:00:00Z"); });
  for (int i = 0; i < interfaces; i++) {
    std::string base = "/interfaces/interface[name=eth" + std::to_string(i) + "]";
    std::string description = "port eth" + std::to_string(i);
    add(base + "/config/description",
        [&description](gnmi::TypedValue* v) { v->set_string_val(description); });
    add(base + "/config/mtu", [](gnmi::TypedValue* v) { v->set_uint_val(1500); });
    add(base + "/config/enabled", [](gnmi::TypedValue* v) { v->set_bool_val(true); });
    add(base + "/state/oper-status", [](gnmi::TypedValue* v) { v->set_string_val("UP"); });
    for (const char* counter : {"in-octets", "out-octets", "in-pkts", "out-pkts"}) {
      add(base + "/state/counters/" + counter, [](gnmi::TypedValue* v) { v->set_uint_val(0); });
    }
  }
  return tree;
}

}  // namespace bench
