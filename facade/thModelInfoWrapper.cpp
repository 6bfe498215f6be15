// The model description facade: properties over the fields, copies of the arrays.
#include "facade/thModelInfoWrapper.h"

#include <algorithm>
#include <memory>

#include "facade/thWrapperUtil.h"

using VCppLib::VException;

namespace thWrapper {

thModelInfoWrapper::thModelInfoWrapper(thalmod::thModelInfo* mI)
    : mesh2d(mI ? &mI->mesh2d : nullptr), mInfo(mI) {
  if (!mI) throw VException("thModelInfoWrapper: no model description was given.");
}

int64_t thModelInfoWrapper::startDT() const { return mInfo->startDT; }
void thModelInfoWrapper::startDT(int64_t v) { mInfo->startDT = v; }
double thModelInfoWrapper::dt() const { return mInfo->dt; }
void thModelInfoWrapper::dt(double v) { mInfo->dt = v; }
int32_t thModelInfoWrapper::nt() const { return mInfo->nt; }
void thModelInfoWrapper::nt(int32_t v) { mInfo->nt = v; }
int32_t thModelInfoWrapper::nol() const { return mInfo->nol; }
void thModelInfoWrapper::nol(int32_t v) { mInfo->nol = v; }
int32_t thModelInfoWrapper::layerType() const { return mInfo->layerType; }
void thModelInfoWrapper::layerType(int32_t v) { mInfo->layerType = v; }
int32_t thModelInfoWrapper::totNoUvf() const { return mInfo->totNoUvf; }
int32_t thModelInfoWrapper::totNoUPnts() const { return mInfo->totNoUPnts; }
double thModelInfoWrapper::topDepth() const { return mInfo->topDepth; }
void thModelInfoWrapper::topDepth(double v) { mInfo->topDepth = v; }

std::vector<int32_t> thModelInfoWrapper::ebli() const {
  int32_t noe = mInfo->mesh2d.noe;
  if (!mInfo->ebli) return std::vector<int32_t>(noe > 0 ? noe : 0, 0);
  return cArr2cliArr(mInfo->ebli, noe);
}

std::vector<int32_t> thModelInfoWrapper::fbli() const {
  mInfo->cellTables();
  return cArr2cliArr(mInfo->fbli, mInfo->totNoUvf);
}

std::vector<std::vector<double>> thModelInfoWrapper::fdz() const {
  std::vector<std::vector<double>> rows;
  mInfo->cellTables();
  if (!mInfo->fdz || !mInfo->fbli) return rows;
  for (int32_t f = 0; f < mInfo->totNoUvf; ++f)
    rows.push_back(cArr2cliArr(mInfo->fdz[f], mInfo->nol - mInfo->fbli[f]));
  return rows;
}

std::vector<int32_t> thModelInfoWrapper::botlayerIdx() const {
  return cArr2cliArr(mInfo->botlayerIdx, mInfo->mesh2d.noe);
}
std::vector<double> thModelInfoWrapper::dz() const { return cArr2cliArr(mInfo->dz, mInfo->nol); }
std::vector<double> thModelInfoWrapper::layerDepth() const {
  return cArr2cliArr(mInfo->layerDepth, mInfo->nol);
}
bool thModelInfoWrapper::isInit() const { return mInfo->isInit; }
int32_t thModelInfoWrapper::cells() const { return mInfo->cells; }
std::vector<double> thModelInfoWrapper::cellDepth() const {
  if (mInfo->cellDepth != nullptr || !mInfo->isInit) return cArr2cliArr(mInfo->cellDepth, mInfo->cells);
  // After a light open the depths come from the columns, without the tables (60 bytes a cell).
  std::vector<double> depth(std::max(mInfo->cells, 0), 0.0);
  mInfo->fillCellDepths(depth.data());
  return depth;
}
std::vector<double> thModelInfoWrapper::elemBathy() const {
  return cArr2cliArr(mInfo->elemBathy, mInfo->mesh2d.noe);
}
std::string thModelInfoWrapper::ts2StrDT(int32_t ts) const { return mInfo->ts2StrDT(ts); }
int64_t thModelInfoWrapper::ts2DT(int32_t ts) const { return mInfo->ts2DT(ts); }

void thModelInfoWrapper::updateDZf(const std::vector<double>& h, const std::vector<double>& u) {
  const char* fn = "thModelInfoWrapper::updateDZf";
  needLength(arrLen(h, fn, "h"), mInfo->mesh2d.noe, fn, "h");
  needLength(arrLen(u, fn, "u"), mInfo->totNoUPnts, fn, "u");
  std::vector<double> hh(h), uu(u);
  mInfo->updateDZf(arrPtr(hh), arrPtr(uu), 3, false, false);
}

int32_t thModelInfoWrapper::findTimestep(int64_t dt) const { return mInfo->findTimestep(dt, 0); }
int32_t thModelInfoWrapper::findTimestep(int64_t dt, int32_t RoundFloorCeil) const {
  return mInfo->findTimestep(dt, RoundFloorCeil);
}
std::string thModelInfoWrapper::toString(int32_t level) const { return mInfo->toString(level); }

thMesh2DWrapper thModelInfoWrapper::ise2VMesh(const std::vector<int32_t>& ise,
                                              const std::vector<double>& isd) {
  const char* fn = "thModelInfoWrapper::ise2VMesh";
  int32_t n = arrLen(ise, fn, "ise");
  needLength(arrLen(isd, fn, "isd"), n, fn, "isd");
  // The new mesh is the caller's: the wrapper returned owns it.
  return thMesh2DWrapper(
      std::unique_ptr<thalmod::thMesh2D>(mInfo->ise2VMesh(arrPtr(ise), arrPtr(isd), n, nullptr)));
}

thMesh2DWrapper thModelInfoWrapper::ise2VMesh(const std::vector<int32_t>& ise, const std::vector<double>& isd,
                                              const std::vector<double>& ish) {
  const char* fn = "thModelInfoWrapper::ise2VMesh";
  int32_t n = arrLen(ise, fn, "ise");
  needLength(arrLen(isd, fn, "isd"), n, fn, "isd");
  needLength(arrLen(ish, fn, "ish"), n, fn, "ish");
  return thMesh2DWrapper(
      std::unique_ptr<thalmod::thMesh2D>(mInfo->ise2VMesh(arrPtr(ise), arrPtr(isd), n, arrPtr(ish))));
}

}  // namespace thWrapper
