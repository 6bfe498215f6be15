// VDraw: painting gridded fields and scattered points onto bitmaps through a colour scale.
//
// A bitmap is an array of nx*ny 32-bit colours 0xAARRGGBB, row after row, top row first: the pixel
// of column i and row j (row 0 holds the smallest y) is at index (ny-1-j)*nx+i. Every computed
// colour is opaque (alpha 255); the alpha byte of the caller's colours is ignored. -1 (opaque
// white) marks a pixel outside a grid.
#pragma once

#include <cstdint>

#include "interp/VCartGrid.h"

namespace VCppLib::VDraw {

// A new array (owner: the caller, array delete) of n colours spread evenly and linearly, channel by
// channel, over the ncolors colours of colArr. Needs ncolors >= 2 and n >= 2.
int32_t* colourRamp(const int32_t* colArr, int32_t ncolors, int32_t n);

// Samples the grid at the lower left corner of every pixel (inverse distance weights of power p)
// and colours the value on a continuous scale of nz steps between zmin and zmax, made from the
// ncolors colours of colArr. Pixels outside the grid become -1. Returns 0. zmax == zmin is allowed:
// the index is then not a number or infinite; not a number and -inf give the first colour, +inf the
// last.
int32_t interpOnBitmap(VCartGrid grid, int32_t*& bitmap, int32_t nx, int32_t ny, int32_t nz, double xmin,
                       double xmax, double ymin, double ymax, double zmin, double zmax, const int32_t* colArr,
                       int32_t ncolors, double p);

// The same sampling, coloured by classes: nbrk ascending break values give nbrk+1 classes, whose
// colours are spread over the ncolors colours of colArr. Returns 0.
int32_t interpOnBitmap(VCartGrid grid, int32_t*& bitmap, int32_t nx, int32_t ny, double xmin, double xmax,
                       double ymin, double ymax, const double* brkArr, int32_t nbrk, const int32_t* colArr,
                       int32_t ncolors, double p);

// Spreads the values v of n scattered points (x, y) over the pixels within the search radius r (in
// map units; r < 0 picks one from the extent and n) by inverse squared distance in pixels, and
// colours them on the scale of nz steps between zmin and zmax. Pixels that no point reaches keep
// what the caller put there. Returns 0. zmax == zmin raises VException: a value equal to zmin would
// then scale to 0 * inf, not a number, which picks no colour on this scale.
int32_t interpPointsOnBitmap(const double* x, const double* y, const double* v, int32_t n, int32_t*& bitmap,
                             int32_t nx, int32_t ny, int32_t nz, double xmin, double xmax, double ymin,
                             double ymax, double zmin, double zmax, const int32_t* colArr, int32_t ncolors,
                             double r);

}  // namespace VCppLib::VDraw
