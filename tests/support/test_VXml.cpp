#include "support/VXml.h"

#include "testutil/thTestUtil.h"

using namespace VCppLib;

TEST(VXml, WrapElementsFindGetAppendSet) {
  using V = std::vector<std::string>;
  // Nested blocks indent one tab a level; a text literal must not fall to the bool overload.
  EXPECT_EQ(
      (V{xmlWrap("abc", "x", false), xmlWrap("a\nb\n", "x", true),
         xmlWrap(xmlWrap("v\n", "in", true), "out", true), xmlWrap("", "x", true), xmlElement("n", "5", "\t"),
         xmlElement("n", std::string("5")), xmlElement("flag", true, "  ") + xmlElement("flag", false)}),
      (V{"<x>abc</x>", "<x>\n\ta\n\tb\n</x>\n", "<out>\n\t<in>\n\t\tv\n\t</in>\n</out>\n", "<x>\n</x>\n",
         "\t<n>5</n>\n", "<n>5</n>\n", "  <flag>true</flag>\n<flag>false</flag>\n"}));
  const std::string ab = "<a><b>1</b></a>";
  // the offset and length of the innermost element's content; a child must lie inside its parent
  int32_t len = 0, lenB = 0, lenC = 0;
  EXPECT_EQ((std::vector<int32_t>{xmlFindTag(ab, "c", len, "/"), len, xmlFindTag(ab, "a/b", lenB, "/"), lenB,
                                  xmlFindTag("<a></a><b>1</b>", "a/b", lenC, "/")}),
            (std::vector<int32_t>{-1, -1, 3, 4, -1}));
  // An empty delimiter makes the whole path one tag; attributes are not matched.
  EXPECT_EQ((V{xmlGetValue(ab, "c"), xmlGetValue(ab, "a/b"), xmlGetValue(ab, "a"),
               xmlGetValue("<a><b></b></a>", "a/b"), xmlGetValue("<c><b>2</b></c>" + ab, "a/b"),
               xmlGetValue("<a/b>3</a/b>", "a/b", ""), xmlGetValue("<a x=\"1\">v</a>", "a"),
               xmlGetValue("</a><a>", "a"), xmlGetValue("", "a"), xmlGetValue("<a>unclosed", "a")}),
            (V{"", "1", "<b>1</b>", "", "1", "3", "", "", "", ""}));
  EXPECT_EQ(
      (V{xmlAppendToValue(ab, "a/b", "2", "/"), xmlAppendToValue("<a>x</a>", "a", "<c>y</c>"),
         xmlAppendToValue("<a>x</a>", "q", "z"), xmlSetValue("<r><a>old</a></r>", "a", "new"),
         xmlSetValue("<r><a>old</a></r>", "q", "new")}),
      (V{"<a><b>12</b></a>", "<a>x<c>y</c></a>", "<a>x</a>", "<r><a>new</a></r>", "<r><a>old</a></r>"}));
}
