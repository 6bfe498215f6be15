// thResultFileWrapper: what an application holds to read a result file, in vectors and strings.
//
// It owns its thResultFile; `mInfo` is a view of the model description inside it, made by
// readHeader (null before). Nothing here writes files. Arrays handed out are the caller's; the
// native arrays behind them are released here. Failures of the library pass through as
// VCppLib::VException; where a read defines a "no result", it is an empty optional (readLayer,
// readItemData with a list, readTimeSeries), an empty vector (readItemData) or -1
// (readTimeSeriesUET).
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "facade/thModelInfoWrapper.h"
#include "resultfile/thResultFile.h"

namespace thWrapper {

class thResultFileWrapper {
 public:
  thResultFileWrapper();  // no name, format -1, nothing read
  ~thResultFileWrapper();
  thResultFileWrapper(const thResultFileWrapper&) = delete;
  thResultFileWrapper& operator=(const thResultFileWrapper&) = delete;
  void Dispose();  // releases the file now; the object is then of no further use

  std::unique_ptr<thModelInfoWrapper> mInfo;  // null until readHeader has run

  int32_t fileVersion() const;
  std::string filename() const;
  // Sets the name and finds the format from it: -1 for a missing file; an unknown extension raises.
  void filename(std::string name);
  void setFilename(std::string filename, int32_t format);  // the file is not looked at
  int32_t format() const;
  void format(int32_t f);
  std::string toString(int32_t level) const;
  static int64_t strDT2LongDT(std::string value);
  static std::string longDT2StrDT(int64_t DT);
  static float delVal();
  std::vector<std::string> items() const;
  std::vector<int32_t> itemLengths() const;  // values per timestep of each item, as items()
  // The timesteps of the whole run: an EMB, RESTART or DECOUPLED run that goes on in "^" files
  // counts them too (the reads follow them); otherwise the header's nt.
  int32_t totNoTimesteps();
  int32_t readHeader();  // the library's result; mInfo is made anew in any case
  // Stores setCol as a 32-bit colour at pixel (w + 20) * 10 of bmd (a drawing check).
  void test(std::vector<uint8_t>& bmd, int32_t w, int32_t h, int32_t setCol);

  // ---- reads
  std::optional<std::vector<double>> readLayer(int32_t itemNo, int32_t timestep, int32_t layer);
  std::optional<std::vector<double>> readItemData(int32_t itemNo, int32_t timestep,
                                                  const std::vector<int32_t>& en);
  std::vector<double> readItemData(int32_t itemNo, int32_t timestep);  // empty after a failed read
  // timeStepTo -1 is the first physical file's nt.
  std::optional<std::vector<double>> readTimeSeries(int32_t itemNo, int32_t elemNo, int32_t layerNo,
                                                    int32_t timeStepFrom, int32_t timeStepTo);
  std::optional<std::vector<double>> readTimeSeries(int32_t itemNo, int32_t elemNo, int32_t layerNo);
  // 0 with the samples in dt and d; -1 (dt and d untouched) when none is selected.
  int32_t readTimeSeriesUET(int32_t itemNo, int64_t SDT, int64_t EDT, std::vector<int64_t>& dt,
                            std::vector<double>& d, int32_t filterItem, double filterMin, double filterMax);
  int32_t readTimeSeriesUET(int32_t itemNo, int64_t SDT, int64_t EDT, std::vector<int64_t>& dt,
                            std::vector<double>& d);
  int32_t readTimeSeriesUET(int32_t itemNo, std::vector<int64_t>& dt, std::vector<double>& d);
  // Always raises "Not implemented.": the facade's profile is unfinished.
  int32_t readProfile(int32_t itemNo, int32_t timestep, int32_t elemNo, std::vector<double>& z,
                      std::vector<double>& d);
  // Samples every dist along the polyline x, y at the depths z; with result 0 the distances d, the
  // values v (point slow, depth fast) and the points xC, yC.
  int32_t extractSectionCart(int32_t itemNo, int32_t timestep, const std::vector<double>& x,
                             const std::vector<double>& y, const std::vector<double>& z, double dist,
                             std::vector<double>& d, std::vector<double>& v, std::vector<double>& xC,
                             std::vector<double>& yC);
  // bitmap: at least 4 nx ny bytes, filled with nx*ny colours 0xAARRGGBB in the machine's order.
  int32_t readLayerAndInterpOnBitmap(int32_t itemNo, int32_t timestep, int32_t layer,
                                     std::vector<uint8_t>& bitmap, int32_t nx, int32_t ny, int32_t nz,
                                     double xmin, double xmax, double ymin, double ymax, double zmin,
                                     double zmax, const std::vector<int32_t>& colArr, double r, double p);
  // Writes the whole file (every item and timestep) as a UGRID 1.0 NetCDF-4 file; see
  // resultfile/thResultFileUgrid.h.
  void toUgrid(std::string path);

 private:
  std::unique_ptr<thalmod::thResultFile> rf;
  thalmod::thResultFile& file() const;
};

}  // namespace thWrapper
