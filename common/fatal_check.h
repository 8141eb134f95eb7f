// Fatal checks raised through the message runtime's own log, as the runtime's
// repeated-field checks would be: logged at FATAL level under a module name
// and line, then the runtime's fatal path ends the call (it throws
// google::protobuf::FatalException, or aborts where exceptions are off).
#ifndef MGMTMSG_COMMON_FATAL_CHECK_H
#define MGMTMSG_COMMON_FATAL_CHECK_H

namespace mgmtmsg {

// Where an index check reports from: the module's name and the lines of its
// two checks (index not negative, index below the element count).
struct IndexCheckSite {
  const char* module;
  int negativeLine;
  int pastEndLine;
};

inline constexpr IndexCheckSite kGnmiIndexSite{"gnmi_ex", 1707, 1708};
inline constexpr IndexCheckSite kGnmiSubscriptionSite{"gnmi_ex", 1715, 1716};
inline constexpr IndexCheckSite kDialinIndexSite{"grpci_grpcdialin_ex", 1707, 1708};

// Logs `text` at FATAL level as coming from module:line. Never returns.
[[noreturn]] void FatalCheckFailed(const char* module, int line, const char* text);

// Ends the call through FatalCheckFailed unless 0 <= index < size.
inline void CheckIndex(int index, int size, const IndexCheckSite& site) {
  if (index < 0) {
    FatalCheckFailed(site.module, site.negativeLine, "CHECK failed: (index) >= (0): ");
  }
  if (index >= size) {
    FatalCheckFailed(site.module, site.pastEndLine, "CHECK failed: (index) < (current_size_): ");
  }
}

// The element at `index` of a repeated field, index-checked as above.
template <class RepeatedField>
decltype(auto) CheckedAt(const RepeatedField& field, int index, const IndexCheckSite& site) {
  CheckIndex(index, field.size(), site);
  return field.Get(index);
}

}  // namespace mgmtmsg

#endif
