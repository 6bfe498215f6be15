// Free-form numeric text: comments of three notations taken out, the delimiter of a text found,
// and tables of three columns read.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/VCppLib.h"

namespace VCppLib {

// The text without "<!-- -->", "/* */" and "// ...\n" comments (the line end of a "//" comment
// stays). Blocks of the same kind nest. Raises "Unmatched comment block. " for an open block,
// which includes a "//" comment on a last line without a line end.
std::string removeComments(std::string text);
// Moves pos, standing at the start of open, behind the block (behind close only with skipClose).
void skipCommentBlock(std::string text, int32_t& pos, std::string open, std::string close, bool skipClose);
// The first character of candidates, in their order, that occurs in text. Raises
// "Delimiter could not be detected." when none does.
char detectDelimiter(std::string text, std::string candidates);
// Appends the rows of three numbers (read as float) to x, y and z, stopping quietly at the first row
// that does not scan. A first line whose first token is no number is a header: header takes its
// tokens. Returns the number of entries in x, or -1 when the file cannot be read. An empty file
// has an empty first line: a header of one empty name, and no rows.
int32_t readXYZ(std::string path, std::vector<double>& x, std::vector<double>& y, std::vector<double>& z,
                std::vector<std::string>& header, std::string delim);
// One entry, the first line with "\n" on its end ("\n" alone for an empty file); no entry when the
// file cannot be read.
std::vector<std::string> readFirstLine(std::string path);

}  // namespace VCppLib
