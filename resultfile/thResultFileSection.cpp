// Sections: a vertical plane through a 3-D item at one timestep, sampled on a regular grid of
// distances and depths (Cartesian) or following the model's own layers at given points.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "resultfile/thResultFile.h"
#include "support/VGeom.h"
#include "support/VMsg.h"
#include "support/VStr.h"

namespace thalmod {

using VCppLib::VException;

namespace {

using VCppLib::str;

using VCppLib::newArrayFrom;

// The values of one timestep of an item, by value index: the whole item, or only the cells
// read one column at a time. An index outside the item reads as delVal: the Cartesian section
// gives every column nol cells, which z-layer columns do not have.
class ItemValues {
 public:
  std::vector<float> buf;                      // the whole item
  std::unordered_map<int64_t, float> columns;  // or the cells of the columns read
  bool whole = true;
  int32_t rc = 0;  // status of the read
  double at(int64_t k) const {
    if (!whole) {
      auto it = columns.find(k);
      return it == columns.end() ? static_cast<double>(delVal) : it->second;
    }
    return k >= 0 && k < static_cast<int64_t>(buf.size()) ? buf[k] : static_cast<double>(delVal);
  }
};

// Points of a layer section: where each lies along the section, and its element (-1 outside).
struct SectionPoints {
  std::vector<double> s;
  std::vector<int32_t> e;
};

// Refuses what would make the section read outside the model's arrays.
void checkSection(thResultFile& rf, int32_t itemNo, const char* fn, const void* x, const void* y,
                  int32_t noPnts) {
  rf.checkItemNo(itemNo, fn);
  const thModelInfo& m = rf.mInfo;
  if (!m.isInit || m.ebli == nullptr || m.elemBathy == nullptr || m.layerDepth == nullptr)
    throw VException("thResultFile::" + std::string(fn) + ": the cells of '" + rf.filename +
                     "' are not set up; read the header first.");
  if (noPnts < 1 || x == nullptr || y == nullptr)
    throw VException("thResultFile::" + std::string(fn) + ": the section needs at least one point; " +
                     str(noPnts) + " were given.");
}

void checkDist(double dist, const char* fn) {
  if (!(dist > 0) || !std::isfinite(dist))
    throw VException("thResultFile::" + std::string(fn) +
                     ": the distance between section points must be a positive number, not " +
                     VCppLib::VStr::toString<double>(dist) + ".");
}

// A count of section points or values beyond what an int32 array holds (NaN: points that are no numbers).
void checkCount(double count, const char* fn) {
  if (!(count <= std::numeric_limits<int32_t>::max()))
    throw VException("thResultFile::" + std::string(fn) +
                     ": the section cannot be laid out: it would have more than 2^31 values, or its points "
                     "are not numbers.");
}

// The whole item, in a buffer padded with delVal up to `minLen` values.
ItemValues readWholeItem(thResultFile& rf, int32_t itemNo, int32_t timestep, int64_t minLen) {
  ItemValues iv;
  const int32_t len = rf.itemLengthVec[itemNo];
  iv.buf.assign(static_cast<size_t>(std::max<int64_t>({len, minLen, 1})), delVal);
  iv.rc = rf.readItemData(itemNo, timestep, iv.buf.data());
  return iv;
}

}  // namespace

// ---------------------------------------------------------------- Cartesian section

int32_t thResultFile::extractSectionCart(int32_t itemNo, int32_t timestep, const double* x, const double* y,
                                         int32_t noPnts, const double* z, int32_t noZ, double dist,
                                         double** d, int32_t* noD, double** v, int32_t* noV, double** xC,
                                         double** yC) {
  const char* fn = "extractSectionCart";
  checkSection(*this, itemNo, fn, x, y, noPnts);
  checkDist(dist, fn);
  if (noZ < 0 || (noZ > 0 && z == nullptr) || !d || !noD || !v || !noV || !xC || !yC)
    throw VException("thResultFile::extractSectionCart: the depths or the result arguments are missing.");
  // Sample points: steps of dist along each segment; what is left of a segment's length is
  // carried into the next one. The shift of a carried remainder divides by the sum of the
  // absolute step components, not by dist: that is how sections have always been laid out.
  std::vector<double> px{x[0]}, py{y[0]};
  double carry = 0.0;
  for (int32_t i = 0; i + 1 < noPnts; ++i) {
    const double dx = x[i + 1] - x[i], dy = y[i + 1] - y[i];
    const double L = std::sqrt(dx * dx + dy * dy), total = L + carry;
    const double mf = std::floor(total / dist);
    checkCount((static_cast<double>(px.size()) + mf) * std::max(noZ, 1), fn);
    const int32_t m = static_cast<int32_t>(mf);
    const double sx = dx * dist / L, sy = dy * dist / L;
    if (m >= 1) {
      const double ox = sx * carry / (std::fabs(sx) + std::fabs(sy)),
                   oy = sy * carry / (std::fabs(sx) + std::fabs(sy));
      for (int32_t k = 1; k <= m; ++k) {
        px.push_back(x[i] - ox + k * sx);
        py.push_back(y[i] - oy + k * sy);
      }
    }
    carry = total - m * dist;
  }
  const int32_t nD = static_cast<int32_t>(px.size());
  std::vector<double> dd(nD);
  for (int32_t i = 1; i < nD; ++i) dd[i] = dd[i - 1] + dist;  // nominal: not the length walked at a bend

  const thModelInfo& mi = mInfo;
  const int32_t nol = mi.nol;
  // Every column is taken to own nol cells here, also in z-layer files.
  const ItemValues iv = readWholeItem(*this, itemNo, timestep, static_cast<int64_t>(mi.mesh2d.noe) * nol);
  std::vector<double> vv(static_cast<size_t>(nD) * noZ);
  for (int32_t i = 0; i < nD; ++i) {
    const int32_t e = mi.mesh2d.pointElem(px[i], py[i]);
    for (int32_t j = 0; j < noZ; ++j) {
      double& out = vv[static_cast<size_t>(i) * noZ + j];
      if (e < 0 || mi.elemBathy[e] < z[j]) {
        out = delVal;
        continue;
      }
      // a negative depth (above the reference level) takes the element's bottom layer
      const int32_t l = z[j] < 0 ? mi.ebli[e] : mi.depth2Layer(e, z[j]);
      out = iv.at(l + static_cast<int64_t>(e) * nol - mi.ebli[e]);
    }
  }
  *d = newArrayFrom(dd);
  *noD = nD;
  *v = newArrayFrom(vv);
  *noV = nD * noZ;
  *xC = newArrayFrom(px);
  *yC = newArrayFrom(py);
  return iv.rc;
}

int32_t thResultFile::extractSectionCart(int32_t itemNo, int32_t timestep, const double* x, const double* y,
                                         int32_t noPnts, const double* z, int32_t noZ, double dist,
                                         double** d, int32_t* noD, double** v, int32_t* noV) {
  double *xC = nullptr, *yC = nullptr;
  int32_t rc = extractSectionCart(itemNo, timestep, x, y, noPnts, z, noZ, dist, d, noD, v, noV, &xC, &yC);
  delete[] xC;
  delete[] yC;
  return rc;
}

void thResultFile::extractSectionCartFreeMem(double* d, double* v, double* xC, double* yC) {
  delete[] d;
  delete[] v;
  delete[] xC;
  delete[] yC;
}

void thResultFile::extractSectionCartFreeMem(double* d, double* v) {
  delete[] d;
  delete[] v;
}

// ---------------------------------------------------------------- layer section

namespace {

// The values of the cells that a layer section needs. A few columns are read one by one, which
// spares reading the whole item; the values are the same either way.
ItemValues readSectionCells(thResultFile& rf, int32_t itemNo, int32_t timestep,
                            const std::vector<int32_t>& elems, bool columnsOnly) {
  const thModelInfo& mi = rf.mInfo;
  std::set<int32_t> distinct;
  for (int32_t e : elems)
    if (e >= 0) distinct.insert(e);
  const bool byColumn = columnsOnly && (rf.format == NC || rf.format == EMB) && mi.layerType == zlayer &&
                        rf.itemLengthVec[itemNo] == mi.cells &&
                        static_cast<int64_t>(distinct.size()) <= rf.sectionColumnReads;
  if (!byColumn) return readWholeItem(rf, itemNo, timestep, mi.cells);
  ItemValues iv;
  iv.whole = false;
  std::vector<float> col(static_cast<size_t>(mi.nol));
  for (int32_t e : distinct) {
    std::fill(col.begin(), col.end(), delVal);  // a read that fails leaves delVal
    rf.readProfile(itemNo, timestep, e, col.data());
    for (int32_t l = mi.ebli[e]; l < mi.nol; ++l)
      iv.columns[static_cast<int64_t>(mi.botlayerIdx[e]) - mi.ebli[e] + l] = col[l];
  }
  return iv;
}

}  // namespace

int32_t thResultFile::extractSectionLayers(int32_t itemNo, int32_t timestep, const double* x, const double* y,
                                           int32_t noPnts, double** d, double** z, double** v, int32_t* n) {
  const char* fn = "extractSectionLayers";
  checkSection(*this, itemNo, fn, x, y, noPnts);
  if (!d || !z || !v || !n)
    throw VException("thResultFile::extractSectionLayers: the result arguments are missing.");
  const thModelInfo& mi = mInfo;
  SectionPoints sp;
  double s = 0.0;
  bool columnsOnly = true;  // every cell wanted lies in its own element's column
  for (int32_t i = 0; i < noPnts; ++i) {
    if (i > 0) s += std::sqrt((x[i] - x[i - 1]) * (x[i] - x[i - 1]) + (y[i] - y[i - 1]) * (y[i] - y[i - 1]));
    const int32_t e = mi.mesh2d.pointElem(x[i], y[i]);
    sp.s.push_back(s);
    sp.e.push_back(e);
    // A point outside the mesh has no column: it is skipped and gives no values.
    if (e >= 0)
      for (int32_t l = 0; l < mi.ebli[e]; ++l)
        columnsOnly = columnsOnly && !(mi.elemBathy[e] >=
                                       mi.layerDepth[l] * (mi.layerType == sigma ? mi.elemBathy[e] : 1.0));
  }
  const ItemValues iv = readSectionCells(*this, itemNo, timestep, sp.e, columnsOnly);
  std::vector<double> dd, zz, vv;
  for (size_t i = 0; i < sp.e.size(); ++i) {
    const int32_t e = sp.e[i];
    if (e < 0) continue;
    for (int32_t l = 0; l < mi.nol; ++l) {
      const double depth = mi.layerDepth[l] * (mi.layerType == sigma ? mi.elemBathy[e] : 1.0);
      if (!(mi.elemBathy[e] >= depth)) continue;
      dd.push_back(sp.s[i]);
      zz.push_back(depth);
      vv.push_back(iv.at(static_cast<int64_t>(mi.botlayerIdx[e]) - mi.ebli[e] + l));
    }
  }
  *d = newArrayFrom(dd);
  *z = newArrayFrom(zz);
  *v = newArrayFrom(vv);
  *n = static_cast<int32_t>(dd.size());
  return iv.rc;
}

int32_t thResultFile::extractSectionLayers(int32_t itemNo, int32_t timestep, double x0, double y0, double x1,
                                           double y1, double dist, double** d, double** z, double** v,
                                           int32_t* n) {
  checkDist(dist, "extractSectionLayers");
  const double mf = std::ceil(std::sqrt((x1 - x0) * (x1 - x0) + (y1 - y0) * (y1 - y0)) / dist);
  checkCount(mf + 1, "extractSectionLayers");
  const int32_t m = static_cast<int32_t>(mf);
  std::vector<double> px(m + 1), py(m + 1);
  for (int32_t k = 0; k < m; ++k) {
    px[k] = x0 + k * (x1 - x0) / m;
    py[k] = y0 + k * (y1 - y0) / m;
  }
  px[m] = x1;  // the end exactly
  py[m] = y1;
  return extractSectionLayers(itemNo, timestep, px.data(), py.data(), m + 1, d, z, v, n);
}

void thResultFile::extractSectionLayersFreeMem(double* d, double* z, double* v) {
  delete[] d;
  delete[] z;
  delete[] v;
}

}  // namespace thalmod
