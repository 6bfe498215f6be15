// Numeric and plane-geometry primitives on arrays of coordinates, float/double array conversion
// and the UTM projection that the mesh works in. Arrays come as pointer and count. Degrees and
// radians convert with the rounded constants rad2deg and deg2rad below, never with full-precision
// pi: the last digits of the results depend on them.
#pragma once

#include <cstdint>
#include <vector>

#include "support/VCppLib.h"

namespace VCppLib {

inline constexpr double rad2deg = 57.29578;
inline constexpr double deg2rad = 0.01745329;
// Result of idwPointsToPoints where no source point contributes.
inline constexpr double idwMissing = -1e-37;

// ---- Array conversions: a new array of n elements (an empty one for n = 0) that the caller
// deletes with delete[]; nullptr when n < 0, or when a is null and n > 0.
double* floatArr2doubleArr(const float* a, int32_t n);
float* doubleArr2floatArr(const double* a, int32_t n);
// A new array (delete[]) with a copy of v; an empty one for an empty v.
template <typename T>
T* newArrayFrom(const std::vector<T>& v) {
  T* p = new T[v.size()];
  for (size_t i = 0; i < v.size(); ++i) p[i] = v[i];
  return p;
}

// ---- Polygons
// Area by the shoelace rule, positive in either orientation; 0 for n < 1.
double polygonArea(const double* x, const double* y, int32_t n);
// Crossing rule with strict comparisons: a point on a left or lower edge is inside, on a right or
// upper edge outside. False for n < 1.
bool pointInPolygon(int32_t n, const double* x, const double* y, double px, double py);

// ---- Sorting
// Quicksort of keys[lo..hi] ascending, moving payload along (payload may be null). The pivot is the
// middle key; the order of equal keys is what this exact quicksort leaves, and callers rely on it.
void sortPaired(double*& keys, int32_t*& payload, int32_t lo, int32_t hi);
void sortPaired(int32_t*& keys, int32_t*& payload, int32_t lo, int32_t hi);

// Indices 0..n-1 ordered by angle around (cx, cy): the angle is refAngle (degrees) minus the
// mathematical direction of the point, brought into [0, 360); clockwise false negates it. With
// refAngle 90 and clockwise true the order starts at north and goes clockwise; with refAngle 0
// and clockwise false it goes counter-clockwise from just past the positive x axis.
// A new array of n indices (an empty one for n = 0, nullptr for n < 0) that the caller deletes
// with delete[].
int32_t* sortAroundPoint(const double* x, const double* y, int32_t n, double cx, double cy, double refAngle,
                         bool clockwise);
// The same around the mean of the points.
int32_t* sortAroundPoint(const double* x, const double* y, int32_t n, double refAngle, bool clockwise);
// The same, and x and y are rearranged in place into the order found.
int32_t* sortAroundPointInPlace(double* x, double* y, int32_t n, double cx, double cy, double refAngle,
                                bool clockwise);
int32_t* sortAroundPointInPlace(double* x, double* y, int32_t n, double refAngle, bool clockwise);

// ---- Lines and segments
// Crossing of segment 1-2 with segment 3-4: 0 and the point in (px, py), -1 for none, -2 for
// parallel lines (even overlapping ones). The x test against segment 1-2 is asymmetric on purpose:
// closer than 1e-10 to x1 and within tol of x2; the other tests accept tol at both ends.
int32_t intersectSegments(double x1, double y1, double x2, double y2, double x3, double y3, double x4,
                          double y4, double& px, double& py, double tol);
// The same in float without tolerance ("between" includes the ends).
int32_t intersectSegmentsF(float x1, float y1, float x2, float y2, float x3, float y3, float x4, float y4,
                           float& px, float& py);
// Angle in radians, 0 to pi, between the directions of segment a and segment b. NaN when a
// segment has zero length.
double angleBetweenLineSegments(double ax1, double ay1, double ax2, double ay2, double bx1, double by1,
                                double bx2, double by2);
// Angle at p between the segments p-a and p-b, radians.
double angleAtPoint(double ax, double ay, double px, double py, double bx, double by);
// The point at distance d (or at fraction d when isFraction) from (x0,y0) towards (x1,y1).
void pointOnLine(double x0, double y0, double x1, double y1, double d, double& ox, double& oy,
                 bool isFraction);
// m points at equal spacing along the polyline of n points, ends included; ox, oy sized m by the caller.
void resampleLine(const double* x, const double* y, int32_t n, int32_t m, double*& ox, double*& oy);
// A strip of quadrilaterals along a polyline, across cells wide, cell width dist (negative: half the
// mean segment length). Allocates ox, oy ((across+1) * n nodes, point by point) and quads
// (4 node indices a quad, (n-1) * across quads); the caller deletes them with delete[].
void lineRibbon(const double* x, const double* y, int32_t n, double*& ox, double*& oy, int32_t& nNodes,
                int32_t& nQuads, int32_t*& quads, int32_t across, double dist);
// x where the line through the two points crosses y = 0; false (x untouched) for a horizontal line.
bool xAxisCrossing(double x1, double y1, double x2, double y2, double& x);
// 1 when p lies left of the directed line 1->2, -1 right of it, 0 on it.
int32_t sideOfLine(double x1, double y1, double x2, double y2, double px, double py);
// Direction from point 1 to point 2 measured clockwise from refAngle, in [0, 360) degrees, or with
// inDegrees false in radians in [0, 2 pi) (refAngle then in radians too). refAngle 90 degrees is north.
double directionAngle(double x1, double y1, double x2, double y2, double refAngle, bool inDegrees);
// Unit normal on the left of the directed segment 1->2; (0, 0) for a segment of zero length.
void unitNormal(double x1, double y1, double x2, double y2, double& nx, double& ny);
// Circumcentre of a triangle; inf or NaN for collinear points.
void circumcentre(double x1, double y1, double x2, double y2, double x3, double y3, double& cx, double& cy);
void circumcentreF(float x1, float y1, float x2, float y2, float x3, float y3, float& cx, float& cy);
// y = a x^2 + b x + c through three points; false (a, b, c untouched) when two x are equal.
bool parabola3(double x1, double y1, double x2, double y2, double x3, double y3, double& a, double& b,
               double& c);
// Mean of n points; (0, 0) for n < 1.
void meanPoint(const double* x, const double* y, int32_t n, double& mx, double& my);
// Uniform in [lo, hi), built from four calls of rand() for more resolution than one call gives.
double randomInRange(double lo, double hi);

// ---- Geodesy
// UTM zone 1..60 of a position, negative south of the equator (the equator itself counts as north).
int32_t utmZone(double lon, double lat);
// A distance in metres as degrees of longitude (at latitude lat) and of latitude, on a sphere of
// radius 6378137.
void metres2Degrees(double metres, double lat, double& dLon, double& dLat);
// Great-circle distance in metres between two positions in degrees, on the radius 6378137.0.
double greatCircleDistance(double lon1, double lat1, double lon2, double lat2);
// Inverse-distance weighting of n source values (xs, ys, vs) onto m target points (xt, yt) into vt
// (sized m by the caller): weights 1/d^power over the sources within radius (radius <= 0: all).
// A target on a source takes its value; a target with no source in reach gets idwMissing.
void idwPointsToPoints(const double* xs, const double* ys, const double* vs, int32_t n, const double* xt,
                       const double* yt, double* vt, int32_t m, double power = 2.0, double radius = -1.0);
// All combinations of indices, entry k running from 0 to counts[k]-1, the last entry fastest.
// Empty when counts is empty or any count is below 1.
std::vector<std::vector<int32_t>> indexCombinations(const std::vector<int32_t>& counts);

// Transverse Mercator series (WGS84 ellipsoid, scale 0.9996, false easting 500000, false northing
// 1e7 south of the equator). zone's sign is ignored by latLon2UTM (the latitude decides); in
// UTM2latLon a negative zone means the southern hemisphere.
void latLon2UTM(double lon, double lat, int32_t zone, double& x, double& y);
void UTM2latLon(double x, double y, int32_t zone, double& lon, double& lat);

}  // namespace VCppLib
