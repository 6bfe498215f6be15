// XML-like text made and picked apart by plain string work: no parser, no attributes. A tag path
// such as "a/b" names element b inside element a; matching is literal, so an opening tag with
// attributes is not found and elements of the same name are not told apart by nesting.
#pragma once

#include <cstdint>
#include <string>

#include "support/VCppLib.h"

namespace VCppLib {

// block false: "<tag>content</tag>". block true: the content's lines indented by one tab between
// "<tag>\n" and "</tag>\n"; content is expected to end with a line end.
std::string xmlWrap(std::string content, std::string tag, bool block);
// indent + "<tag>value</tag>" + newline.
std::string xmlElement(std::string tag, std::string value, std::string indent = "");
std::string xmlElement(std::string tag, const char* value, std::string indent = "");
// The value written as "true" or "false".
std::string xmlElement(std::string tag, bool value, std::string indent = "");
// Position of "<tag>" of the path's last tag, and in len the distance to its "</tag>";
// -1 (and len -1) when not found. An empty delim makes the whole path one tag.
int32_t xmlFindTag(std::string text, std::string tagPath, int32_t& len, std::string delim = "/");
// The text between the element's tags; empty when not found.
std::string xmlGetValue(std::string text, std::string tagPath, std::string delim = "/");
// addition put right in front of the element's closing tag; text unchanged when not found.
std::string xmlAppendToValue(std::string text, std::string tagPath, std::string addition,
                             std::string delim = "/");
// The element's opening tag and value replaced by "<" + tagPath + ">" + value (for single-tag
// paths); text unchanged when not found.
std::string xmlSetValue(std::string text, std::string tagPath, std::string value, std::string delim = "/");

}  // namespace VCppLib
