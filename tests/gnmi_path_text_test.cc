// Paths as text, copied, joined and matched (gnmi/gnmi_path.h).
#include <google/protobuf/util/message_differencer.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>

#include "gnmi/gnmi.pb.h"
#include "gnmi/gnmi_path.h"
#include "support/gnmi_access.h"

namespace {

using google::protobuf::util::MessageDifferencer;
using testsupport::FromText;

// The path that `text` makes of `path`; errorAt is not written.
gnmi::Path Read(const std::string& text, gnmi::Path path = {}) {
  uint32_t at = 99;
  EXPECT_EQ(GNMI_Path_FromString(&path, text.data(), text.size(), &at), 1) << text << " at " << at;
  EXPECT_EQ(at, 99U);
  return path;
}

std::string Text(gnmi::Path path) {
  std::string text(GNMI_Path_ToString(&path, nullptr, 0), '\0');
  GNMI_Path_ToString(&path, text.data(), text.size() + 1);
  return text;
}

TEST(GnmiPathText, ReadsTheConventionAndWritesItBackCanonicalKeepingTheTarget) {
  // text, the path it makes (in text format), its canonical text
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"/interfaces/interface[name=eth0]/state",
       R"(elem{name:"interfaces"} elem{name:"interface" key{key:"name" value:"eth0"}}
          elem{name:"state"})",
       "/interfaces/interface[name=eth0]/state"},
      {"a/b[name=Ethernet1/2/3]/", R"(elem{name:"a"} elem{name:"b" key{key:"name"
          value:"Ethernet1/2/3"}})",
       "/a/b[name=Ethernet1/2/3]"},
      {"/a[k=a=b][name=[foo][baz==bat][e=]",
       R"(elem{name:"a" key{key:"k" value:"a=b"} key{key:"name" value:"[foo"}
          key{key:"baz" value:"=bat"} key{key:"e" value:""}})",
       "/a[baz==bat][e=][k=a=b][name=[foo]"},
      {"", "", "/"},
      {"/", "", "/"},
      {"openconfig:/interfaces", R"(origin:"openconfig" elem{name:"interfaces"})",
       "openconfig:/interfaces"},
      {"r:/", R"(origin:"r")", "r:/"},
      {"/openconfig-interfaces:interfaces", R"(elem{name:"openconfig-interfaces:interfaces"})",
       "/openconfig-interfaces:interfaces"},
      {"a\\:/b", R"(elem{name:"a:"} elem{name:"b"})", "/a:/b"},
      {":/a", R"(elem{name:":"} elem{name:"a"})", "/:/a"},
      {R"(o\ x:/\a\/b\[\]\\\	[k\=\[\]\\\ =v\]\\=[/ ]/c)",
       R"(origin:"o x" elem{name:"a/b[]\\\t" key{key:"k=[]\\ " value:"v]\\=[/ "}} elem{name:"c"})",
       R"(o\ x:/a\/b\[\]\\\	[k\=\[\]\\\ =v\]\\=[/ ]/c)"},
  };
  for (const auto& [text, made, canonical] : cases) {
    SCOPED_TRACE(text);
    const gnmi::Path path =
        Read(text, FromText<gnmi::Path>(R"(origin:"o" element:"e" elem{name:"e"} target:"r1")"));
    gnmi::Path expected = FromText<gnmi::Path>(made);
    expected.set_target("r1");
    EXPECT_TRUE(MessageDifferencer::Equals(path, expected)) << path.DebugString();
    EXPECT_EQ(Text(path), canonical);
    EXPECT_TRUE(MessageDifferencer::Equals(Read(canonical, path), path));
  }
  gnmi::Path empty = Read("/a");
  EXPECT_THROW(GNMI_Path_FromString(&empty, nullptr, 1, nullptr), std::logic_error);
  EXPECT_EQ(GNMI_Path_FromString(&empty, nullptr, 0, nullptr), 1);
  EXPECT_EQ(empty.elem_size(), 0);
}

TEST(GnmiPathText, BadTextIsRefusedWhereItGoesWrongAndLeavesThePathAlone) {
  const std::pair<std::string, uint32_t> cases[] = {
      // text, offset of the error
      {"/a//b", 3},  {"/a/[k=v]", 3},     {"//", 1},        {"/a[k]", 4},  {"/a[k", 4},
      {"/a[=v]", 3}, {"/a[k[x=v]", 4},    {"/a[k x=v]", 4}, {"/a b", 2},   {"/a\tb", 2},
      {"/a]", 2},    {"/a[k=v]]", 7},     {"/a[k=v]x", 7},  {"/a[k=v", 6}, {"/a[k=v\\]", 8},
      {"/a\\", 3},   {"/a[k=1][k=2]", 7}, {"x y:/a", 1},
  };
  const gnmi::Path before =
      FromText<gnmi::Path>(R"(origin:"o" elem{name:"keep" key{key:"k" value:"v"}} target:"r1")");
  for (const auto& [text, errorAt] : cases) {
    SCOPED_TRACE(text);
    gnmi::Path path = before;
    uint32_t at = 99;
    EXPECT_EQ(GNMI_Path_FromString(&path, text.data(), text.size(), &at), 0);
    EXPECT_EQ(at, errorAt);
    EXPECT_EQ(GNMI_Path_FromString(&path, text.data(), text.size(), nullptr), 0);
    EXPECT_TRUE(MessageDifferencer::Equals(path, before));
  }
}

TEST(GnmiPathText, ToStringSizesAndCutsLikeSnprintfNeverPastCap) {
  gnmi::Path path = Read("/ab[k=v]");
  EXPECT_EQ(GNMI_Path_ToString(&path, nullptr, 0), 8U);
  for (const uint32_t cap : {0U, 1U, 4U, 8U, 9U}) {
    std::string buf(12, 'x');  // what lies past cap is a guard
    EXPECT_EQ(GNMI_Path_ToString(&path, buf.data(), cap), 8U);
    const std::string written = cap == 0 ? "" : std::string("/ab[k=v]").substr(0, cap - 1) + '\0';
    EXPECT_EQ(buf, written + std::string(12 - cap, 'x')) << cap;
  }
}

TEST(GnmiPathCovers, PatternsWithWildcardsEllipsesKeysAndOrigins) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      // pattern, a path it covers, a path it does not cover
      {"/a/b", "/a/b/c", "/a"},
      {"/a/*/c", "/a/x[k=v]/c/d", "/a/c"},
      {"/a/.../b", "/a/b", "/a/c"},
      {"/.../x/.../y", "/a/x/b/c/y/z", "/a/y/x"},
      {"/a/.../b/.../b", "/a/b/c/b", "/a/c/b"},
      {"/i[name=eth0]", "/i[name=eth0][unit=1]", "/i[name=eth1]"},
      {"/i[name=eth0][unit=1]", "/i[unit=1][name=eth0]", "/i[name=eth0]"},
      {"/i[name=*]", "/i[name=x]", "/i"},
      {"/*[name=x]", "/j[name=x]", "/j[name=y]"},
      {"/a/...[k=v]/c", "/a/b/c", "/a/b"},
      {"/a/.../c/d", "/a/c/d", "/a/c"},
      {"openconfig:/a", "/a/b", "oc:/a"},
      {"/a", "openconfig:/a", "rfc7951:/a"},
      {"oc:/a", "oc:/a/b", "/a"},
  };
  for (const auto& [patternText, covered, uncovered] : cases) {
    SCOPED_TRACE(patternText);
    gnmi::Path pattern = Read(patternText);
    gnmi::Path in = Read(covered, FromText<gnmi::Path>(R"(target:"elsewhere")"));
    gnmi::Path out = Read(uncovered);
    EXPECT_EQ(std::make_pair(GNMI_Path_Covers(&pattern, &in), GNMI_Path_Covers(&pattern, &out)),
              std::make_pair(1, 0));
  }
}

TEST(GnmiPathCopy, CopyFromMakesAnIndependentCopyAndAppendElemsJoins) {
  gnmi::Path from = Read("oc:/a[k=v][j=w]/b");
  from.set_target("r1");
  gnmi::Path to = Read("other:/x/y[q=1]/z");
  EXPECT_EQ(GNMI_Path_CopyFrom(&to, &from), 1);
  EXPECT_TRUE(MessageDifferencer::Equals(to, from));
  from.mutable_elem(0)->mutable_key()->at("k") = "changed";
  EXPECT_EQ(Text(to), "oc:/a[j=w][k=v]/b");

  EXPECT_EQ(GNMI_Path_AppendElems(&to, &from), 1);
  EXPECT_EQ(Text(to), "oc:/a[j=w][k=v]/b/a[j=w][k=changed]/b");
  EXPECT_EQ(GNMI_Path_AppendElems(&to, &to), 1);
  // A handle to another message, or a context, is refused and left alone.
  gnmi::PathElem elem;
  const auto ctx = testsupport::Make<GNMI_Get_Init, GNMI_Get_DeInit>();
  char buf[] = "xyz";
  for (void* other : {static_cast<void*>(&elem), ctx.get()}) {
    EXPECT_EQ(std::make_tuple(GNMI_Path_FromString(other, "/b", 2, nullptr),
                              GNMI_Path_ToString(other, buf, 4), GNMI_Path_CopyFrom(other, &to),
                              GNMI_Path_CopyFrom(&to, other), GNMI_Path_AppendElems(other, &to),
                              GNMI_Path_AppendElems(&to, other), GNMI_Path_Covers(other, &to),
                              GNMI_Path_Covers(&to, other)),
              std::make_tuple(0, 0U, 0, 0, 0, 0, 0, 0));
  }
  EXPECT_EQ(
      std::make_tuple(Text(to), to.target(), std::string(buf), elem.ByteSizeLong()),
      std::make_tuple("oc:/a[j=w][k=v]/b/a[j=w][k=changed]/b/a[j=w][k=v]/b/a[j=w][k=changed]/b",
                      "r1", "xyz", 0U));
}

}  // namespace
