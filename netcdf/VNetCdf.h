// VNetCdf: the one class through which NetCDF files are read and written.
//
// An object owns one library handle (`ncid`) and caches at open time what the file says about its
// dimensions and variables. Reading converts any supported stored type into the caller's type and
// applies an optional per-variable scale, offset and missing value; writing defines compressed
// variables and puts whole variables or single records; copying moves dimensions, variables and
// attributes from one open file into another.
//
// Blocks handed to the caller ("raw" blocks of getVarRaw, getTimestepRaw, getAttRaw) are made with
// `new char[]`; release them with VNetCdf::freeRaw (or `delete[] static_cast<char*>(p)`).
// Arrays made by getVarData<T>, getStartAndCountArr, getTimestepStartAndCount and getDimIdsArr are
// made with array new of their element type and released with array delete.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <typeinfo>
#include <vector>

#include "interp/VCartGrid.h"
#include "support/VCppLib.h"

namespace VCppLib {

class VNetCdf {
 public:
  int32_t status = 0;        // result of the last attribute call; 0 is success
  int32_t deflateLevel = 2;  // compression level of variables defined through this object
  int32_t ncid = -1;         // library handle; -1 when no file is open
  int32_t reservedFlag = 1;  // nothing reads it
  int32_t ndims = 0;
  int32_t nvars = 0;
  int32_t ngatts = 0;
  int32_t unlimdimid = -1;                      // id of the unlimited dimension, -1 if none
  std::vector<std::string> dimNames;            // indexed by dimension id
  std::vector<int32_t> dimLen;                  // indexed by dimension id, narrowed to 32 bits
  std::vector<int32_t> varNdims;                // indexed by variable id
  std::vector<std::string> varNames;            // indexed by variable id
  std::vector<int32_t> varTypes;                // NetCDF type code, indexed by variable id
  std::vector<std::vector<int32_t>> varDimIds;  // indexed by variable id, in the variable's order
  int32_t layerLen3D = -1;  // cells of one record of the first 3-D record variable, -1 if none
  int32_t layerLen4D = -1;  // same for the first 4-D record variable
  std::string fileName;
  double* scaleTab = nullptr;   // per variable id, null until setScaleOffsetAtts
  double* offsetTab = nullptr;  // per variable id, null until setScaleOffsetAtts
  void** missingTab = nullptr;  // per variable id: null or a raw block holding the missing value

  // Opens `name` for reading (never for writing), or creates it as a NetCDF-4 file when `create`.
  VNetCdf(std::string name, bool create);
  ~VNetCdf();
  // One handle, one owner: no copies. A move hands the handle and the tables over.
  VNetCdf(const VNetCdf&) = delete;
  VNetCdf& operator=(const VNetCdf&) = delete;
  VNetCdf(VNetCdf&& o) noexcept;
  VNetCdf& operator=(VNetCdf&& o) noexcept;

  void closeFile();
  void readFileInfo(bool reset);
  void endDef();

  // ---- lookups by name (-1 when absent)
  int32_t getDimId(std::string name);
  int32_t getDimLen(std::string name);
  int32_t getVarId(std::string name);
  std::vector<int32_t> getVarIds(std::vector<std::string> names, bool mustExist);
  int32_t findRecordVar(std::string attName);

  // ---- attributes; varid may be NC_GLOBAL
  bool hasAtt(std::string name, int32_t varid);
  std::string getAttStr(std::string name, int32_t varid);
  float getAttFloat(std::string name, int32_t varid);
  double getGlobalAttDouble(std::string name);
  int32_t getGlobalAttInt(std::string name);
  double getAttAsDouble(std::string name, int32_t varid);
  void* getAttRaw(std::string name, int32_t varid);

  // ---- whole-variable reads in the stored type
  void* getVarRaw(int32_t varid);
  template <typename T>
  int32_t getVarData(int32_t varid, T*& data);  // data: new T[], whole variable; returns count
  static void freeRaw(void* block) { delete[] static_cast<char*>(block); }

  static int32_t ncTypeSize(int32_t type);
  // The message of a type the class does not read or write: "Unsupported nc type: N".
  static std::string unsupportedTypeMessage(int32_t type);
  int32_t getTypeSize(int32_t type);
  int32_t getVarLen(int32_t varid, bool skipRecordDim);

  // ---- typed reading with scale and offset
  static const std::type_info& NCType2cppType(int32_t xtype);
  // start/count: new size_t[1024] each, indexed by the variable's dimensions
  int32_t getStartAndCountArr(int32_t varid, size_t*& start, size_t*& count);
  int32_t getTimestepStartAndCount(int32_t varid, int32_t t, size_t*& start, size_t*& count);
  static int32_t getStartAndCountTotLen(int32_t ndims, size_t* start, size_t* count);
  // T: double, float, int32_t, int16_t, int64_t
  template <typename T>
  int32_t getData(int32_t varid, T*& data, size_t* start, size_t* count);
  template <typename T>
  void getDataIntoGivenType(int32_t varid, T*& data, size_t* start, size_t* count);
  template <typename T>
  void getAllDataIntoGivenType(int32_t varid, T*& data);
  template <typename T>
  void getTimestepData(int32_t varid, int32_t t, T*& data);
  void* getTimestepRaw(int32_t varid, int32_t t);
  // In: float, double, int16_t, int32_t, long; Out: double, float, int32_t, int16_t, int64_t
  template <typename In, typename Out>
  void scaleOffset(In* dataIn, Out*& dataOut, int32_t l, int32_t varid);
  // T: double, float, int32_t, int16_t, int64_t
  template <typename T>
  void scaleOffset(T*& data, int32_t l, int32_t varid);
  void setScaleOffsetAtts(std::string scaleName, std::string offsetName, std::string missingName);

  // ---- coordinates, time variable and grids
  bool isBandGrid();
  std::vector<int64_t> getTimeVarValues(int32_t timeVar, std::string units);
  VCartGrid getGrid(int32_t xVar, int32_t yVar, int32_t zVar);
  // Raises when the file's size cannot hold the values that its header declares for the variable
  // (a damaged header), before a read sized by that declaration allocates; `fn` names the caller.
  void checkVarFitsFile(int32_t varid, const char* fn);

  // ---- writing (files made with create = true) and copying
  int32_t defDim(std::string name, int32_t len);  // len < 0: the unlimited dimension
  int32_t defVar(std::string name, std::vector<int32_t> dimIds, int32_t type);
  int32_t putVar(int32_t varid, void* data);
  int32_t putTimestepData(int32_t varid, int32_t t, void* data);
  std::vector<int32_t> getVarIdsFromList(std::string list);
  std::vector<int32_t> getDimIdsFromList(std::string list);
  int32_t getDimIdsArr(std::string list, int32_t*& ids);  // ids: new int32_t[], one per token
  void copyAtt(VNetCdf& src, int32_t srcVar, int32_t dstVar, int32_t attNum);
  static int32_t copyAttByName(int32_t srcNcid, int32_t srcVar, std::string name, int32_t dstNcid,
                               int32_t dstVar);
  void copyVarAtts(VNetCdf& src, int32_t srcVar, int32_t dstVar);
  int32_t copyVar(VNetCdf& src, int32_t varid, bool copyData, std::string newName);
  void copyVarData(VNetCdf& src, int32_t srcVar, int32_t dstVar);
  void copyAllVars(VNetCdf& src, bool copyData);
  void copyDim(VNetCdf& src, int32_t dimId, bool withVar, std::string newName);
  void copyAllDims(VNetCdf& src, bool withVar);

 private:
  int32_t tabLen = 0;  // number of entries of scaleTab, offsetTab and missingTab

  void freeTabs();
  // Raises a VException naming `fn` and the file when varid is not a known variable.
  void checkVarId(int32_t varid, const char* fn) const;
  // Elements of the variable from the library's own dimension lengths, optionally without the
  // unlimited dimension; raises when the count does not fit the 32-bit counts of this class.
  int64_t trueVarLen(int32_t varid, bool skipRecordDim, const char* fn);
  int32_t rawBlockInfo(int32_t varid, int32_t& typeSize);  // element count of getVarRaw
  void readVarRawInto(int32_t varid, void* block, int32_t typeSize, int32_t n);
  // Raises when a read of count (the variable's own dimensions) has more elements than an int32.
  void checkReadFits(int32_t varid, const size_t* count, const char* fn);
};

}  // namespace VCppLib
