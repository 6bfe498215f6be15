// Interpolators of scattered points: VInterpol prepares the inverse-distance weights that carry a
// field from one point set to another, and RBF3DInterpol interpolates one field in 3-D through a
// multiquadric radial basis function.
//
// VInterpol's result is its two lists: for target t, sources[t][i] is a source point number (in
// the caller's arrays, masked forms included) and weights[t][i] its weight, 1/dist^p, not
// normalised. A user forms the weighted mean of the source values per target.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace VCppLib {

// Methods of VInterpol. The only one is inverse distance over the three nearest source points.
enum vinterpolType : int32_t { vinterpolIDW = 0 };

class VInterpol {
 public:
  std::string name;
  int32_t noNeighbours = 4;                   // kept; the method uses three neighbours
  double p = 2.0;                             // power of the inverse distance
  double zScale = 1.0;                        // factor on vertical differences in 3-D
  double deleteVal = -1e-37;                  // kept with the object
  bool isInit = false;                        // weights are ready
  bool flag = false;                          // kept with the object
  int32_t type = 0;                           // a vinterpolType value
  std::vector<std::vector<double>> weights;   // [target] weights of its sources
  std::vector<std::vector<int32_t>> sources;  // [target] source point numbers, parallel to weights

  // Each returns 0. The 2-D forms replace the lists, the 3-D forms add to them. mask: one byte per
  // source point, zero leaves the point out. At least three source points must remain. A target
  // on a source point gets that point alone, with weight 1.0.
  int32_t init2D(double* x, double* y, int32_t n, double* tx, double* ty, int32_t nt, int32_t type);
  int32_t init2D(double* x, double* y, uint8_t* mask, int32_t n, double* tx, double* ty, int32_t nt,
                 int32_t type);
  int32_t init3D(double* x, double* y, double* z, int32_t n, double* tx, double* ty, double* tz, int32_t nt,
                 int32_t type);
  int32_t init3D(double* x, double* y, double* z, uint8_t* mask, int32_t n, double* tx, double* ty,
                 double* tz, int32_t nt, int32_t type);

 private:
  int32_t init(double* x, double* y, double* z, uint8_t* mask, int32_t n, double* tx, double* ty, double* tz,
               int32_t nt, int32_t type, bool is3D);
};

// Solves A c = b in place by Gaussian elimination without pivoting; the solution replaces b.
// Returns -1 when a pivot of the first size-1 columns is below 1e-6 in magnitude, else 0. The last
// pivot is divided by without a test.
int32_t gaussSolve(double** A, double* b, int32_t size);

// Multiquadric RBF with a constant term through n source points (x, y, z) and the values
// values[0][..] (only the first of noFields fields is computed), evaluated at nt targets into a
// new array out[0] (owned by the caller, array delete). The basis is (r^2+R^2)^(k/2); R <= 0 takes
// 0.815 of the smallest source spacing. Returns 0. Raises "RBF3DInterpol: gaussian elimination
// failed." when the elimination stops, and a sentence when the system is singular otherwise.
int32_t RBF3DInterpol(double* x, double* y, double* z, double** values, int32_t n, int32_t noFields,
                      double* tx, double* ty, double* tz, double** out, int32_t nt, double R, int32_t k);
// One field, targets at the depths tz; out: a new array of nt values.
int32_t RBF3DInterpol(double* x, double* y, double* z, double* values, int32_t n, double* tx, double* ty,
                      double* tz, double*& out, int32_t nt, double R, int32_t k);
// One field, every target at the depth tz.
int32_t RBF3DInterpol(double* x, double* y, double* z, double* values, int32_t n, double* tx, double* ty,
                      double tz, double*& out, int32_t nt, double R, int32_t k);

}  // namespace VCppLib
