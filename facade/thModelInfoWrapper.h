// thModelInfoWrapper: a model description as callers outside the library see it.
//
// A view over a thModelInfo that it does not own (the one inside a result file): it is valid as
// long as that owner lives. Arrays handed out are fresh copies. The property setters store the
// value and do nothing else: they rebuild no cells.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "facade/thMesh2DWrapper.h"
#include "model/thModelInfo.h"

namespace thWrapper {

class thModelInfoWrapper {
 public:
  explicit thModelInfoWrapper(thalmod::thModelInfo* mI);

  thMesh2DWrapper mesh2d;  // view of the model's mesh

  // ---- properties
  int64_t startDT() const;
  void startDT(int64_t v);
  double dt() const;
  void dt(double v);
  int32_t nt() const;
  void nt(int32_t v);
  int32_t nol() const;
  void nol(int32_t v);
  int32_t layerType() const;
  void layerType(int32_t v);
  int32_t totNoUvf() const;
  bool isInit() const;    // the cells are set up
  int32_t cells() const;  // computational cells
  int32_t totNoUPnts() const;
  double topDepth() const;
  void topDepth(double v);
  std::vector<int32_t> ebli() const;             // noe entries; zeros before the cells are set up
  std::vector<int32_t> fbli() const;             // totNoUvf entries
  std::vector<std::vector<double>> fdz() const;  // per face f, nol - fbli[f] entries

  // ---- operations
  std::vector<int32_t> botlayerIdx() const;  // noe entries, ghost columns left out
  std::vector<double> dz() const;
  std::vector<double> layerDepth() const;
  std::vector<double> elemBathy() const;
  std::vector<double> cellDepth() const;  // cells entries: depth of each cell's centre
  std::string ts2StrDT(int32_t ts) const;
  int64_t ts2DT(int32_t ts) const;
  // Upwind face thicknesses from the surface elevation h (noe values) and the velocities u
  // (totNoUPnts values); no buffer swap, no wet/dry.
  void updateDZf(const std::vector<double>& h, const std::vector<double>& u);
  int32_t findTimestep(int64_t dt) const;  // nearest
  int32_t findTimestep(int64_t dt, int32_t RoundFloorCeil) const;
  std::string toString(int32_t level) const;
  // The vertical section mesh of a section (ise, isd: equal lengths; ish: surface heights), owned
  // by the wrapper returned.
  thMesh2DWrapper ise2VMesh(const std::vector<int32_t>& ise, const std::vector<double>& isd);
  thMesh2DWrapper ise2VMesh(const std::vector<int32_t>& ise, const std::vector<double>& isd,
                            const std::vector<double>& ish);

 private:
  thalmod::thModelInfo* mInfo = nullptr;
};

}  // namespace thWrapper
