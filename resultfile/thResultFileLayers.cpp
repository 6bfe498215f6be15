// Layers and profiles: one value per element at one timestep (a horizontal slice of a 3-D item, or
// a 2-D item as it stands), the layer at a depth, a layer painted on a bitmap, and the column of
// one element.

#include <memory>
#include <vector>

#include "interp/VDraw.h"
#include "resultfile/thLayerPick.h"
#include "resultfile/thResultFile.h"
#include "support/VMsg.h"
#include "support/VStr.h"

namespace thalmod {

using VCppLib::VException;
namespace VStr = VCppLib::VStr;

namespace {

using VCppLib::str;

}  // namespace

int32_t thResultFile::readLayer(int32_t itemNo, int32_t timestep, int32_t layer, float** data) {
  if (!data || !*data)
    throw VException("thResultFile::readLayer: no buffer was given for the layer of '" + filename + "'.");
  if (format == EMT) throw VException("thResultFile::readLayer Not implemented for TEXT1 files.");
  if (format != NC && format != EMB) throw VException("thResultFile::readLayer undefined format.");
  checkItemNo(itemNo, "readLayer");
  int32_t noe = mInfo.mesh2d.noe, nol = mInfo.nol, cells = mInfo.cells;
  int32_t len = itemLengthVec[itemNo];
  // An absolute layer number above the surface reads past the column, and past the item for the
  // last element; 999 and up mean the top-most cell that holds a value.
  bool is3D = len == cells;
  if (mInfo.layerType == zlayer && is3D && layer >= nol && layer < 999)
    throw VException("thResultFile::readLayer: layer " + str(layer) + " does not exist in '" + filename +
                     "', whose layers are 0 (bottom) to " + str(nol - 1) +
                     " (surface); -1 stands for the bottom cell and 999 for the top-most value.");
  if (format == EMB) return readLayerEMB(itemNo, timestep, layer, *data);

  if (mInfo.layerType == sigma) throw VException("Not implemented.");
  if (mInfo.layerType != zlayer) return noe;
  float* out = *data;
  if (len == noe) {
    readItemData(itemNo, timestep, out);  // a 2-D item: the layer does not matter
    return noe;
  }
  if (!is3D)
    throw VException("thResultFile::readLayer: item '" + itemNameVec[itemNo] + "' of '" + filename +
                     "' holds " + str(len) + " values, which is neither one per cell (" + str(cells) +
                     ") nor one per element (" + str(noe) + ").");
  if (!mInfo.isInit)
    throw VException("thResultFile::readLayer: the cells of '" + filename +
                     "' are not set up; read the header first.");
  if (layerBuf.size() < static_cast<size_t>(cells)) layerBuf.resize(cells);
  if (readItemData(itemNo, timestep, layerBuf.data()) != 0) return -1;
  const float* v = layerBuf.data();
  pickLayer(mInfo, layer, out, [v](int64_t cell, float& x) {
    x = v[cell];
    return true;
  });
  return noe;
}

int32_t thResultFile::readLayer(int32_t itemNo, int32_t timestep, int32_t layer, double** data) {
  if (!data)
    throw VException("thResultFile::readLayer: no place was given for the layer of '" + filename + "'.");
  int32_t noe = mInfo.mesh2d.noe;
  std::unique_ptr<float[]> buf(new float[noe > 0 ? noe : 1]());
  float* p = buf.get();
  int32_t rc = readLayer(itemNo, timestep, layer, &p);
  double* out = new double[noe > 0 ? noe : 1];
  for (int32_t e = 0; e < noe; ++e) out[e] = p[e];
  *data = out;
  return rc;
}

int64_t thResultFile::readLayerAtDepth(int32_t itemNo, int32_t timestep, double depth, double* data) {
  int32_t nol = mInfo.nol, noe = mInfo.mesh2d.noe;
  if (!mInfo.layerDepth || !mInfo.dz)
    throw VException("thResultFile::readLayerAtDepth: the layers of '" + filename +
                     "' are not set up; read the header first.");
  // the lowest layer whose upper edge lies above the depth
  int32_t l = -1;
  for (int32_t k = 0; k < nol && l < 0; ++k)
    if (depth > mInfo.layerDepth[k] - mInfo.dz[k] / 2) l = k;
  if (mInfo.layerType == zlayer) {
    if (l < 0) return -1;
    // The layer is read and its values are dropped: `data` stays as it was.
    std::unique_ptr<float[]> buf(new float[noe > 0 ? noe : 1]());
    float* p = buf.get();
    return readLayer(itemNo, timestep, l, &p);
  }
  checkItemNo(itemNo, "readLayerAtDepth");
  if (!data)
    throw VException("thResultFile::readLayerAtDepth: no buffer was given for the layer of '" + filename +
                     "'.");
  int32_t len = itemLengthVec[itemNo];
  if (static_cast<int64_t>(nol) * noe > len)
    throw VException("thResultFile::readLayerAtDepth: item '" + itemNameVec[itemNo] + "' of '" + filename +
                     "' holds " + str(len) + " values, fewer than the " +
                     str(static_cast<int64_t>(nol) * noe) + " of a sigma layout.");
  std::unique_ptr<float[]> buf(new float[len > 0 ? len : 1]());
  readItemData(itemNo, timestep, buf.get());
  for (int32_t e = 0; e < noe; ++e) data[e] = l > 0 ? buf[l + nol * e] : static_cast<double>(delVal);
  return 0;
}

int32_t thResultFile::readLayerAndInterpOnBitmap(int32_t itemNo, int32_t timestep, int32_t layer,
                                                 int32_t** bitmap, int32_t nx, int32_t ny, int32_t nz,
                                                 double xmin, double xmax, double ymin, double ymax,
                                                 double zmin, double zmax, int32_t* colArr, int32_t noCol,
                                                 double r, double /*p*/) {
  if (!bitmap || !*bitmap || !colArr)
    throw VException("thResultFile::readLayerAndInterpOnBitmap: no bitmap or no colours were given for '" +
                     filename + "'.");
  int32_t noe = mInfo.mesh2d.noe;
  std::vector<float> values(noe > 0 ? noe : 1, 0.0f);
  float* p = values.data();
  readLayer(itemNo, timestep, layer, &p);
  std::vector<double> v(values.begin(), values.begin() + noe);
  return VCppLib::VDraw::interpPointsOnBitmap(mInfo.mesh2d.exCoor, mInfo.mesh2d.eyCoor, v.data(), noe,
                                              *bitmap, nx, ny, nz, xmin, xmax, ymin, ymax, zmin, zmax, colArr,
                                              noCol, r);
}

int32_t thResultFile::readProfile(int32_t itemNo, int32_t timestep, int32_t elemNo, float* data) {
  if (format == EMT) throw VException("thResultFile::readProfile Not implemented for TEXT1 files.");
  if (format != NC && format != EMB) throw VException("thResultFile::readProfile undefined format.");
  checkItemNo(itemNo, "readProfile");
  checkElemNo(elemNo, "readProfile");
  if (!data)
    throw VException("thResultFile::readProfile: no buffer was given for the profile of '" + filename + "'.");
  if (format == EMB) return readProfileEMB(itemNo, timestep, elemNo, data);
  checkOpenNC("readProfile");
  // indexed by absolute layer: below the sea bed the deleted value; a failed read (a timestep
  // beyond the file) leaves the rest as it was
  int32_t b = mInfo.ebli[elemNo];
  for (int32_t l = 0; l < b; ++l) data[l] = delVal;
  readSlabNC(itemNo, timestep, 1, mInfo.botlayerIdx[elemNo], mInfo.nol - b, data + b);
  return 0;
}

}  // namespace thalmod
