// Opening a result file for the thal tool and turning the user's words (item names, times,
// layers, points) into the library's numbers, with one clear sentence for every mistake.
//
// The commands read through the facade (thWrapper::thResultFileWrapper), the way in that the
// library offers a program of one's own; only what the facade has no place for (writing files,
// the lines of a text table) opens the native thResultFile.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "facade/thResultFileWrapper.h"
#include "resultfile/thResultFile.h"

namespace thTool {

using thWrapper::thResultFileWrapper;

// Opens and reads the header of a result file. A missing, unreadable or foreign file raises
// ToolError naming it.
std::unique_ptr<thResultFileWrapper> openResult(const std::string& path);
// The same file as the library's own object, for what the facade does not offer.
std::unique_ptr<thalmod::thResultFile> openNativeResult(const std::string& path);

// Checks that a file can be read, raising ToolError ("No such file: ...") otherwise.
void checkReadable(const std::string& path);

// A column of a TEXT0D or TEXT1D table is a `column`: such tables hold no model to measure by.
enum class ItemKind { item3D, item2D, vector, column };
ItemKind itemKind(const thResultFileWrapper& rf, int32_t itemNo);
std::string itemKindName(ItemKind k);  // "3-D", "2-D", "vector", "table column"

// A TEXT0D or TEXT1D table: no mesh, no time axis, a time stamp on each line.
bool isTextTable(const thResultFileWrapper& rf);

// The number of an item, or ToolError listing the items.
int32_t findItem(const thResultFileWrapper& rf, const std::string& name);

// A timestep from a number ("12") or a date-time ("2024-06-01 12:00:00"; the nearest timestep
// within the run, "^" files included); out of range raises ToolError.
int32_t parseTime(thResultFileWrapper& rf, const std::string& text);

// A layer for painting: a layer number 0 (bottom) to nol-1 (surface), -1 or "bottom" for each
// element's bottom cell, 999 or "top" for each element's top-most cell with a value, "surface"
// for nol-1.
int32_t parsePaintLayer(const thResultFileWrapper& rf, const std::string& text);

// A layer of one element for a time series: a layer number from the element's bottom layer to
// nol-1, or "bottom", "surface" (also "top").
int32_t parseSeriesLayer(const thResultFileWrapper& rf, int32_t elem, const std::string& text);

// The element that holds a point, or ToolError when the point lies outside the mesh.
int32_t findElement(thResultFileWrapper& rf, double x, double y);

// A time axis of n timesteps in words, for messages ("^" files included).
std::string timeAxisText(thResultFileWrapper& rf);
std::string timeAxisText(int32_t n, const std::string& first, const std::string& last);

// A read of the library that failed, as one sentence saying what was read from which file.
[[noreturn]] void readFailed(const thResultFileWrapper& rf, const std::string& what, const std::string& why);
[[noreturn]] void readFailed(const thalmod::thResultFile& rf, const std::string& what,
                             const std::string& why);

}  // namespace thTool
