// thResultFile: one logical result file of the model, in any of its formats.
//
// An object holds a file name, a format, the model description that the results belong to
// (`mInfo`: time axis, mesh, layers, cell numbering), the list of items (named output quantities,
// each a fixed number of float32 values per timestep), a list of static (time-independent) items,
// and the state of sequential reading and of writing.
//
// A logical file may spread over several physical files: `name.ext`, `name^1.ext`, `name^2.ext`,
// ... each holding `nt` timesteps (the last one possibly fewer).
//
// Sources: thResultFile.cpp (object, enumerations, format detection, dispatch, file names),
// thResultFileNC.cpp (NetCDF header and writing), thResultFileItems.cpp (item data),
// thResultFileLayers.cpp (layers and profiles), thResultFileSeries.cpp (time series),
// thResultFileSection.cpp (sections),
// thResultFileWrite.cpp (the writing sequence common to all formats), thResultFileReport.cpp
// (toString), and one source per further format: thResultFileEMB.cpp (EMB, RESTART, DECOUPLED)
// and thResultFileText.cpp (EMT, EMF, TEXT0D, TEXT1D), which implement the per-format members
// declared at the end of the class.
//
// Arrays handed to the caller are made with array new; the caller releases them with array delete.
#pragma once

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "model/thModelInfo.h"
#include "netcdf/VNetCdf.h"
#include "support/VCppLib.h"

namespace thalmod {

// Formats of result files. The value is stored in files and passes the facade as int32; -1 means
// that the format is not known. The text is what a file name's extension is matched against.
enum fileFmtEnum : int32_t {
  EMT = 0,          // text dump of all values, write-only
  EMB = 1,          // binary result file
  TEXT0D = 2,       // delimited text table of a point series
  TEXT1D = 3,       // delimited text table of a profile series
  EMF = 4,          // fixed-width text table of all cells, write-only
  NC = 10,          // NetCDF result file
  RESTART = 100,    // EMB layout, first item "hdrst_u"
  DECOUPLED = 101,  // EMB layout, first item a flux over all U-points
  MESH = 1000       // a mesh file; fills only the mesh of mInfo
};

// Upper-cases s and matches it exactly against the format texts.
fileFmtEnum str2fileFmtEnum(std::string s);
std::string fileFmtEnum2str(fileFmtEnum f);

// Prepares a name for a new file: with `backup`, an existing file is renamed to the name with the
// local time stamp (VTimeStampFmt) inserted before the extension; without, it is removed. The name
// is remembered in backupFileName.
void backupOrRemoveFile(std::string filename, bool backup);
// The name given to the last backupOrRemoveFile call (library-wide).
extern std::string backupFileName;

// A time-independent block of a result file.
struct staticItem {
  int32_t noValues = 0;
  int32_t noBytes = 0;      // length of data in bytes
  uint8_t* data = nullptr;  // the values; null when noValues is not positive
  std::string name;
  std::string typeName;  // "float", "char" or "int"
  // Set when the library made `data` (a reader's copy, a writer's own block); such blocks are
  // released with the thResultFile. Blocks handed in through addStaticItem stay the caller's.
  bool ownsData = false;
};

class thResultFile {
 public:
  float* floatBuf = nullptr;             // maxItemLength values, made at the first float64 write
  int32_t floatBufLen = 0;               // values that floatBuf holds; it grows when a new header needs more
  int32_t format = -1;                   // a fileFmtEnum value or -1
  std::string filename;                  // name of the first physical file
  thModelInfo mInfo;                     // the model description; mInfo.mesh2d is the mesh
  std::vector<std::string> itemNameVec;  // item names, in file order
  std::vector<int32_t> itemLengthVec;    // values per timestep of each item, same order
  // Modification time of the file read (seconds since 1970); the local clock as a long date-time
  // after writeHeader.
  int64_t fileTime = 0;
  int32_t fileVersion = 8;         // version of the file read; 0 when it has none
  int32_t headerLen = 0;           // byte offset of the first data value of an EMB file
  int32_t curTimestep = 0;         // timestep of sequential reading
  int32_t colWidth = 12;           // width of a value column in EMF output
  std::string sep = "\t";          // separator of text output
  VCppLib::VNetCdf* nc = nullptr;  // the open NetCDF file, owned
  int32_t ncTimeDim = -1, ncElemDim = -1, ncCellDim = -1;  // dimension ids made by writeHeader
  std::vector<int32_t> ncVarIds;                           // NetCDF variable id of each item
  // Timesteps after which EMB writing moves on to the next physical file; negative: worked out
  // by writeHeader so that a file stays below 2e9 bytes.
  int32_t timestepsPerFile = -1;
  int32_t fileNo = 0;                        // current physical file, 0 for the first
  int32_t maxItemLength = 0;                 // largest entry of itemLengthVec, set by writeHeader
  int32_t writeVersion = 8;                  // version stamped on files written
  std::fstream stream;                       // stream of EMB writing
  int32_t writeTimestep = 0, writeItem = 0;  // position of the next writeItemData call
  int64_t versionCutoffDT = 0;               // "2012-06-01": older EMB files have no version field
  std::string* cellText = nullptr;           // per cell, the EMF row being built
  int32_t cellTextLen = 0;                   // entries of cellText
  int32_t textBufLen = 0;                    // characters waiting in textBuf
  char textBuf[10240];                       // output buffer of the text formats
  int64_t textPos = 0;                       // where the next line of a TEXT0D or TEXT1D file starts
  uint8_t* itemRead = nullptr;               // per item: read at curTimestep (readNextItemData)
  int32_t itemReadLen = 0;                   // entries of itemRead
  std::vector<staticItem> staticItems;       // static items not consumed by the reader, or to write
  // Scratch of the layer reads of NetCDF files: one timestep of a 3-D item, by cell. Kept between
  // calls so that a series of maps does not fault in a fresh block of memory each time.
  std::vector<float> layerBuf;
  // Values read at a time by the layer read of EMB files (about a megabyte): the columns are picked
  // while a run is in the cache. A column longer than a run is read as a run of its own.
  int32_t layerRunValues = 1 << 18;
  // Layer sections through at most this many elements read their columns one by one; more, and
  // the whole item is read once.
  int32_t sectionColumnReads = 1000;

  // format -1 finds the format from the file name. If the file exists its header is read at once.
  explicit thResultFile(std::string filename = "", int32_t format = -1);
  thResultFile(std::string filename, fileFmtEnum format);
  // Closes the NetCDF file and frees what the object owns.
  ~thResultFile();
  thResultFile(const thResultFile&) = delete;
  thResultFile& operator=(const thResultFile&) = delete;

  // ---- object, dispatch and file names
  // -1 when the file cannot be opened; 0, or for MESH the result of readMeshFromFile.
  int32_t readHeader();
  // The light open: readHeader without the model's thickness and per-cell tables, which
  // mInfo.cellTables() builds on first use (thModelInfo.h says which members need them). Items,
  // layers, profiles, time series, sections and painting need none of them; the public fields
  // are the same as after readHeader once the tables are built.
  int32_t readHeaderLight();
  // -1 when the file cannot be opened; otherwise the format of the name's extension.
  fileFmtEnum getFormatFromFile(std::string filename);
  std::string getFileName();  // name of physical file fileNo
  // The physical file that holds `timestep`, which becomes an index within that file.
  std::string getFileForTimestep(int32_t& timestep);
  int32_t getTotNoTimesteps();          // timesteps in all physical files; puts fileNo back to 0
  int32_t getItemNo(std::string name);  // first item of that name; the number of items if none
  void addItem(std::string name, int32_t length);
  int32_t getItemOffset(int32_t itemNo);  // values of the items before itemNo in a timestep
  std::string toString(int32_t level);

  // ---- item data of one timestep
  // data: the item's length of values. Returns 0, or a negative NetCDF status when a NetCDF read
  // fails, a timestep beyond the file's among them (the buffer then keeps what it held).
  int32_t readItemData(int32_t itemNo, int32_t timestep, float* data);
  int32_t readItemData(int32_t itemNo, int32_t timestep, double* data);
  // The columns of the listed elements of a 3-D item; *data: a new array (at least one value), handed
  // over in every case that does not raise. Returns the count. A failed read of the item is not
  // reported: its columns are then zeros (delVal still marks negative entries of a sigma file).
  int32_t readItemData(int32_t itemNo, int32_t timestep, int32_t* en, int32_t noEn, double** data);
  // The item at the next timestep once it has been read at the present one; *data: the caller's
  // buffer. Returns the date-time of the timestep read.
  int64_t readNextItemData(int32_t itemNo, double** data);
  // Next block of lines of a TEXT0D or TEXT1D table; *data: new rows, free with freeTimestepData.
  int64_t readNextTimestep(double*** data, int32_t* noLines);
  void freeTimestepData(double** data);

  // ---- layers and profiles
  // layer: an absolute layer, -1 for the bottom cell of each element, 999 or more for the top-most
  // cell that holds a value. *data: the caller's buffer of noe values. Returns noe, or -1.
  int32_t readLayer(int32_t itemNo, int32_t timestep, int32_t layer, float** data);
  // *data: a new array of noe values.
  int32_t readLayer(int32_t itemNo, int32_t timestep, int32_t layer, double** data);
  int64_t readLayerAtDepth(int32_t itemNo, int32_t timestep, double depth, double* data);
  // Draws the layer at the element centres onto the caller's bitmap of nx*ny colours; p is ignored.
  int32_t readLayerAndInterpOnBitmap(int32_t itemNo, int32_t timestep, int32_t layer, int32_t** bitmap,
                                     int32_t nx, int32_t ny, int32_t nz, double xmin, double xmax,
                                     double ymin, double ymax, double zmin, double zmax, int32_t* colArr,
                                     int32_t noCol, double r, double p);
  // One element's column into the caller's buffer of nol values, indexed by absolute layer.
  int32_t readProfile(int32_t itemNo, int32_t timestep, int32_t elemNo, float* data);

  // ---- sections (thResultFileSection.cpp). Results are new arrays, the caller's; the FreeMem
  // members release them. Each returns 0, or the negative status of a failed item read (the
  // values are then delVal).
  // Cartesian: points every `dist` along the polyline of noPnts points (a remainder is carried
  // over a bend; d is nominal, 0, dist, 2 dist, ...) times the noZ depths z; v[i*noZ+j] is point i
  // at depth j, every column taken to own nol cells; delVal outside the mesh, below the sea bed
  // and beyond the item. xC, yC: the points.
  int32_t extractSectionCart(int32_t itemNo, int32_t timestep, const double* x, const double* y,
                             int32_t noPnts, const double* z, int32_t noZ, double dist, double** d,
                             int32_t* noD, double** v, int32_t* noV, double** xC, double** yC);
  int32_t extractSectionCart(int32_t itemNo, int32_t timestep, const double* x, const double* y,
                             int32_t noPnts, const double* z, int32_t noZ, double dist, double** d,
                             int32_t* noD, double** v, int32_t* noV);
  static void extractSectionCartFreeMem(double* d, double* v, double* xC, double* yC);
  static void extractSectionCartFreeMem(double* d, double* v);
  // Layers: at each point inside the mesh, for each layer whose centre lies above the element's sea
  // bed, the distance walked (d), the layer centre's depth (z) and the cell's value (v); *n entries.
  // Points outside the mesh are skipped.
  int32_t extractSectionLayers(int32_t itemNo, int32_t timestep, const double* x, const double* y,
                               int32_t noPnts, double** d, double** z, double** v, int32_t* n);
  // The same at ceil(length/dist)+1 points spread evenly along a line, its end exactly.
  int32_t extractSectionLayers(int32_t itemNo, int32_t timestep, double x0, double y0, double x1, double y1,
                               double dist, double** d, double** z, double** v, int32_t* n);
  static void extractSectionLayersFreeMem(double* d, double* z, double* v);

  // ---- time series; timeStepTo is not part of the range, negative means to the end
  // *data: a new array, one value per timestep. Returns the number of values.
  int32_t readTimeSeries(int32_t itemNo, int32_t elemNo, int32_t layerNo, double** data, int32_t timeStepFrom,
                         int32_t timeStepTo);
  // *data: a new array, timestep after timestep, each the column from the element's bottom up.
  int32_t readTimeSeriesProfile(int32_t itemNo, int32_t elemNo, double** data, int32_t timeStepFrom,
                                int32_t timeStepTo);
  // A TEXT0D column with its own time stamps; *dt, *d: new arrays. Returns the number of samples.
  int32_t readTimeSeriesUET(int32_t itemNo, int64_t** dt, double** d, int64_t SDT, int64_t EDT,
                            int32_t filterItem, double filterMin, double filterMax);

  // ---- writing
  int32_t writeHeader();
  int32_t writeHeader(int32_t noItems);  // first names items "0", "1", ... up to noItems-1
  // The next item of the current timestep; items come in item order, timestep after timestep.
  int32_t writeItemData(float* data, int32_t n);
  int32_t writeItemData(double* data, int32_t n);
  void appendText(std::string s);
  void closeFile(int32_t noTimesteps);
  int32_t setNoTimesteps(int32_t noTimesteps);
  // The block is kept by reference: it must live until the file is written.
  void addStaticItem(std::string name, float* data, int32_t n);
  void addStaticItem(std::string name, int32_t* data, int32_t n);
  void addStaticItem(std::string name, char* data, int32_t n, int32_t pos);

  // ---- checks shared by the sources (each raises a VException naming the file)
  void checkItemNo(int32_t itemNo, const char* fn);
  void checkElemNo(int32_t elemNo, const char* fn);
  // The NetCDF file is open for reading.
  void checkOpenNC(const char* fn);
  // The model is set up (mesh, layers, cells) and every item holds at least one value; called by
  // the format writers once the item lengths are settled.
  void checkModelForWrite();
  void release();  // frees what the object owns and closes its files

  // ---- NetCDF (thResultFileNC.cpp)
  void readHeaderNC();
  int32_t readItemDataNC(int32_t itemNo, int32_t timestep, float* data);
  void writeHeaderNC();
  void writeItemDataNC(float* data, int32_t n);
  void closeFileNC();
  // Reads timesteps t0..t0+nt-1, values k0..k0+nk-1 of an item of the open file into out;
  // returns the NetCDF status.
  int32_t readSlabNC(int32_t itemNo, size_t t0, size_t nt, size_t k0, size_t nk, float* out);
  // The same from physical file fileNo as float64; raises when the slab does not fit the file or
  // the read fails.
  void readSeriesSlabNC(int32_t itemNo, size_t t0, size_t nt, size_t k0, size_t nk, double* out,
                        const char* fn);

  // ---- EMB, RESTART and DECOUPLED (thResultFileEMB.cpp)
  void readHeaderEMB();
  int32_t readItemDataEMB(int32_t itemNo, int32_t timestep, float* data);
  int32_t readLayerEMB(int32_t itemNo, int32_t timestep, int32_t layer, float* data);
  // The z-layer pick of a 3-D item from the open file f, whose item block starts at byte `first`.
  void pickColumnsEMB(FILE* f, int64_t first, int32_t layer, float* data);
  int32_t readProfileEMB(int32_t itemNo, int32_t timestep, int32_t elemNo, float* data);
  // Fills data with timesteps from..to-1 of value `index` of the item in physical file fileNo.
  void readTimeSeriesEMB(int32_t itemNo, int32_t index, int32_t from, int32_t to, double* data);
  // Fills data with timesteps from..to-1 of the element's column in physical file fileNo.
  void readTimeSeriesProfileEMB(int32_t itemNo, int32_t elemNo, int32_t from, int32_t to, double* data);
  void writeHeaderEMB();
  void writeItemDataEMB(float* data, int32_t n);
  void closeFileEMB(int32_t noTimesteps);
  void patchNoTimestepsEMB(int32_t noTimesteps);  // writes nt into the closed file getFileName()

  // ---- EMT, EMF, TEXT0D and TEXT1D (thResultFileText.cpp)
  void readHeaderText();
  int32_t readTimeSeriesUETText(int32_t itemNo, int64_t** dt, double** d, int64_t SDT, int64_t EDT,
                                int32_t filterItem, double filterMin, double filterMax);
  int64_t readNextTimestepText(double*** data, int32_t* noLines);
  void freeTimestepDataText(double** data);
  void writeHeaderText();
  void writeItemDataText(float* data, int32_t n);
  void closeFileText(int32_t noTimesteps);
};

}  // namespace thalmod
