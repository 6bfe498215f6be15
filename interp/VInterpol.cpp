// Inverse-distance weights over the three nearest points, and the multiquadric RBF interpolation.

#include "interp/VInterpol.h"

#include <cmath>
#include <memory>
#include <string>

#include "interp/Vkdtree.h"
#include "support/VCppLib.h"
#include "support/VMsg.h"

namespace VCppLib {

namespace {

using VCppLib::str;

void needArrays(bool ok, const char* fn, const char* what) {
  if (!ok) throw VException(std::string(fn) + ": the " + what + " arrays are missing.");
}

// The source points that the mask keeps (all without a mask), and their numbers in the caller's
// arrays.
struct compactPoints {
  std::vector<double> x, y, z;
  std::vector<int32_t> map;
};

compactPoints compact(const double* x, const double* y, const double* z, const uint8_t* mask, int32_t n) {
  compactPoints c;
  for (int32_t i = 0; i < n; ++i) {
    if (mask && mask[i] == 0) continue;
    c.x.push_back(x[i]);
    c.y.push_back(y[i]);
    if (z) c.z.push_back(z[i]);
    c.map.push_back(i);
  }
  return c;
}

}  // namespace

int32_t VInterpol::init(double* x, double* y, double* z, uint8_t* mask, int32_t n, double* tx, double* ty,
                        double* tz, int32_t nt, int32_t interpType, bool is3D) {
  const char* fn = is3D ? "VInterpol::init3D" : "VInterpol::init2D";
  if (n < 0 || nt < 0)
    throw VException(std::string(fn) + ": the counts of source points (" + str(n) + ") and targets (" +
                     str(nt) + ") must not be negative.");
  needArrays(n == 0 || (x && y && (!is3D || z)), fn, "source coordinate");
  needArrays(nt == 0 || (tx && ty && (!is3D || tz)), fn, "target coordinate");
  compactPoints c = compact(x, y, is3D ? z : nullptr, mask, n);
  type = interpType;
  if (!is3D) {  // a 2-D preparation starts afresh, a 3-D one adds to what is there
    weights.clear();
    sources.clear();
  }
  if (interpType != vinterpolIDW) throw VException("Unsupported interpolation type.");
  int32_t m = static_cast<int32_t>(c.map.size());
  if (m < 3)
    throw VException(std::string(fn) + ": the method takes the three nearest source points, but " + str(m) +
                     " remain" + (mask ? " after masking." : "."));
  std::unique_ptr<Vkdtree> tree(is3D ? new Vkdtree(c.x.data(), c.y.data(), c.z.data(), m, zScale)
                                     : new Vkdtree(c.x.data(), c.y.data(), m));
  for (int32_t t = 0; t < nt; ++t) {
    // farthest first; an exact hit ends the search early and comes last, the rest stays -1
    int32_t near[3] = {-1, -1, -1};
    if (is3D)
      tree->nearest3(tx[t], ty[t], tz[t], near);
    else
      tree->nearest3(tx[t], ty[t], near);
    std::vector<double> w;
    std::vector<int32_t> s;
    for (int32_t j : near) {
      if (j < 0) continue;
      double dx = c.x[j] - tx[t], dy = c.y[j] - ty[t];
      double dz = is3D ? (c.z[j] - tz[t]) * zScale : 0.0;
      double dist = std::sqrt(dx * dx + dy * dy + dz * dz);
      if (dist == 0.0) {
        w.assign(1, 1.0);
        s.assign(1, j);
        break;
      }
      w.push_back(1.0 / std::pow(dist, p));
      s.push_back(j);
    }
    weights.push_back(std::move(w));
    sources.push_back(std::move(s));
  }
  isInit = true;
  // Back to the caller's numbers. Every list of the object goes through the map, earlier ones
  // included, so that a second masked 3-D preparation renumbers what a first one left; numbers
  // beyond this map stay as they are rather than being read out of it.
  if (mask)
    for (auto& list : sources)
      for (int32_t& j : list) j = j >= 0 && j < m ? c.map[j] : j;
  return 0;
}

int32_t VInterpol::init2D(double* x, double* y, int32_t n, double* tx, double* ty, int32_t nt,
                          int32_t interpType) {
  return init(x, y, nullptr, nullptr, n, tx, ty, nullptr, nt, interpType, false);
}

int32_t VInterpol::init2D(double* x, double* y, uint8_t* mask, int32_t n, double* tx, double* ty, int32_t nt,
                          int32_t interpType) {
  return init(x, y, nullptr, mask, n, tx, ty, nullptr, nt, interpType, false);
}

int32_t VInterpol::init3D(double* x, double* y, double* z, int32_t n, double* tx, double* ty, double* tz,
                          int32_t nt, int32_t interpType) {
  return init(x, y, z, nullptr, n, tx, ty, tz, nt, interpType, true);
}

int32_t VInterpol::init3D(double* x, double* y, double* z, uint8_t* mask, int32_t n, double* tx, double* ty,
                          double* tz, int32_t nt, int32_t interpType) {
  return init(x, y, z, mask, n, tx, ty, tz, nt, interpType, true);
}

// ---------------------------------------------------------------- RBF

int32_t gaussSolve(double** A, double* b, int32_t size) {
  for (int32_t i = 0; i < size - 1; ++i) {
    if (std::fabs(A[i][i]) < 1e-6) return -1;
    for (int32_t r = i + 1; r < size; ++r) {
      double f = A[r][i] / A[i][i];
      for (int32_t c = i + 1; c < size; ++c) A[r][c] -= f * A[i][c];
      b[r] -= f * b[i];
    }
  }
  for (int32_t i = size - 1; i >= 0; --i) {
    double s = b[i];
    for (int32_t c = i + 1; c < size; ++c) s -= A[i][c] * b[c];
    b[i] = s / A[i][i];
  }
  return 0;
}

namespace {

double sq3(const double* x, const double* y, const double* z, int32_t i, double px, double py, double pz) {
  double dx = x[i] - px, dy = y[i] - py, dz = z[i] - pz;
  return dx * dx + dy * dy + dz * dz;
}

// R^2: of the given shape parameter, or 0.815 of the smallest spacing of the source points.
double shapeSquared(const double* x, const double* y, const double* z, int32_t n, double R) {
  if (R > 0) return R * R;
  double d2 = 1e37;
  for (int32_t i = 0; i < n; ++i)
    for (int32_t j = i + 1; j < n; ++j) d2 = std::min(d2, sq3(x, y, z, i, x[j], y[j], z[j]));
  double r = 0.815 * std::sqrt(d2);
  return r * r;
}

}  // namespace

int32_t RBF3DInterpol(double* x, double* y, double* z, double** values, int32_t n, int32_t noFields,
                      double* tx, double* ty, double* tz, double** out, int32_t nt, double R, int32_t k) {
  if (n < 1 || nt < 0 || noFields < 1)
    throw VException(
        "RBF3DInterpol: it needs at least one source point and field and no negative target count (" +
        str(n) + " points, " + str(noFields) + " fields, " + str(nt) + " targets were given).");
  needArrays(x && y && z && values && values[0], "RBF3DInterpol", "source");
  needArrays(out && (nt == 0 || (tx && ty && tz)), "RBF3DInterpol", "target");
  const int32_t size = n + 1;
  const double r2 = shapeSquared(x, y, z, n, R), e = k / 2.0;
  std::vector<double> block(static_cast<size_t>(size) * size), c(size);
  std::vector<double*> A(size);
  for (int32_t i = 0; i < size; ++i) A[i] = block.data() + static_cast<size_t>(i) * size;
  for (int32_t i = 0; i < n; ++i) {
    A[i][i] = std::pow(r2, e);
    for (int32_t j = i + 1; j < n; ++j)
      A[i][j] = A[j][i] = std::pow(sq3(x, y, z, i, x[j], y[j], z[j]) + r2, e);
    A[i][n] = A[n][i] = 1.0;
    c[i] = values[0][i];
  }
  A[n][n] = 0.0;
  c[n] = 0.0;
  if (gaussSolve(A.data(), c.data(), size) != 0)
    throw VException("RBF3DInterpol: gaussian elimination failed.");
  // The last pivot is divided by untested; a singular system shows as values that are not finite.
  for (double v : c)
    if (!std::isfinite(v))
      throw VException(
          "RBF3DInterpol: the system of the " + str(n) +
          " source points is singular (are two of them at one place?); there is no interpolation.");
  double* o = new double[nt > 0 ? nt : 1];
  for (int32_t t = 0; t < nt; ++t) {
    double s = c[n];
    for (int32_t i = 0; i < n; ++i) s += c[i] * std::pow(sq3(x, y, z, i, tx[t], ty[t], tz[t]) + r2, e);
    o[t] = s;
  }
  out[0] = o;
  return 0;
}

int32_t RBF3DInterpol(double* x, double* y, double* z, double* values, int32_t n, double* tx, double* ty,
                      double* tz, double*& out, int32_t nt, double R, int32_t k) {
  double* fields[1] = {values};
  double* results[1] = {nullptr};
  RBF3DInterpol(x, y, z, fields, n, 1, tx, ty, tz, results, nt, R, k);
  out = results[0];
  return 0;
}

int32_t RBF3DInterpol(double* x, double* y, double* z, double* values, int32_t n, double* tx, double* ty,
                      double tz, double*& out, int32_t nt, double R, int32_t k) {
  std::vector<double> depths(nt > 0 ? nt : 0, tz);
  return RBF3DInterpol(x, y, z, values, n, tx, ty, depths.data(), out, nt, R, k);
}

}  // namespace VCppLib
