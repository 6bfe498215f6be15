// thalmod.ResultFile: the reads of the result file facade, as numpy arrays.
#include <algorithm>

#include "python/thalmodPy.h"
#include "support/VFiles.h"

namespace thPy {

namespace {

using thWrapper::thResultFileWrapper;
using VCppLib::VException;

struct pyResultFile {
  std::shared_ptr<fileState> st;
  thResultFileWrapper& f() const { return st->file(); }
};

pyResultFile openFile(const std::string& path) {
  if (!VCppLib::fileExists(path)) {
    PyErr_SetString(PyExc_FileNotFoundError, ("No such result file: '" + path + "'.").c_str());
    throw py::error_already_set();
  }
  auto st = std::make_shared<fileState>();
  st->path = path;
  st->rf = std::make_unique<thResultFileWrapper>();
  st->rf->filename(path);  // an unknown extension raises the library's sentence
  if (st->rf->format() < 0 || st->rf->readHeader() < 0)
    throw VException("The result file '" + path + "' cannot be read.");
  return pyResultFile{st};
}

int32_t itemNo(const pyResultFile& r, const numOrName& item) {
  const std::vector<std::string> names = r.f().items();
  if (auto* n = std::get_if<int64_t>(&item))
    return checkIndex(*n, static_cast<int64_t>(names.size()), "Item");
  const std::string& name = std::get<std::string>(item);
  auto it = std::find(names.begin(), names.end(), name);
  if (it != names.end()) return static_cast<int32_t>(it - names.begin());
  std::string list;
  for (const std::string& s : names) list += (list.empty() ? "" : ", ") + s;
  throw py::key_error("No item '" + name + "' in '" + r.st->path + "'; its items are: " + list + ".");
}

// A timestep number, or a date-time "YYYY-MM-DD HH:MM:SS" that must be one of the run's timesteps.
int32_t timestep(const pyResultFile& r, const numOrName& t) {
  if (auto* n = std::get_if<int64_t>(&t)) {
    if (*n < 0) throw py::index_error("Timestep " + std::to_string(*n) + " is negative.");
    return toInt32(*n, "Timestep");
  }
  const std::string& text = std::get<std::string>(t);
  const thWrapper::thModelInfoWrapper& mi = r.st->model();
  int32_t ts = mi.findTimestep(thResultFileWrapper::strDT2LongDT(text), -1);
  if (ts < 0)
    throw py::key_error("No timestep at '" + text + "' in '" + r.st->path + "': its " +
                        std::to_string(mi.nt()) + " timesteps run from " + mi.ts2StrDT(0) + " every " +
                        py::str(py::float_(mi.dt())).cast<std::string>() + " s.");
  return ts;
}

// A layer for layer reads: a number 0 (deepest) to nol-1, -1 or "bottom" (each column's bottom
// cell), 999 or "top" (each column's top-most value), or "surface" (nol-1).
int32_t layerCode(const pyResultFile& r, const numOrName& layer) {
  const int32_t nol = r.st->model().nol();
  if (auto* n = std::get_if<int64_t>(&layer)) {
    if (*n == -1 || (*n >= 999 && *n <= 1 << 30)) return static_cast<int32_t>(*n);
    return checkIndex(*n, nol, "Layer");
  }
  const std::string& s = std::get<std::string>(layer);
  if (s == "bottom") return -1;
  if (s == "top") return 999;
  if (s == "surface") return nol - 1;
  throw py::value_error("The layer '" + s + "' is none of a number, 'bottom', 'top' or 'surface'.");
}

// A layer of one column, for series: a number, "surface" or "top" (nol-1), "bottom" (its own).
int32_t seriesLayer(const pyResultFile& r, int32_t elem, const numOrName& layer) {
  const int32_t nol = r.st->model().nol();
  if (auto* n = std::get_if<int64_t>(&layer)) return checkIndex(*n, nol, "Layer");
  const std::string& s = std::get<std::string>(layer);
  if (s == "surface" || s == "top") return nol - 1;
  if (s == "bottom") return r.st->model().ebli()[elem];
  throw py::value_error("The layer '" + s + "' is none of a number, 'bottom', 'top' or 'surface'.");
}

int32_t element(const pyResultFile& r, int64_t e) {
  return checkIndex(e, r.st->model().mesh2d.noe(), "Element");
}

std::string what(const pyResultFile& r, int32_t item, int32_t ts) {
  return "Item '" + r.f().items()[item] + "' at timestep " + std::to_string(ts);
}

py::array_t<double> readLayer(const pyResultFile& r, const numOrName& item, const numOrName& t,
                              const numOrName& layer) {
  const int32_t i = itemNo(r, item), ts = timestep(r, t);
  auto v = r.f().readLayer(i, ts, layerCode(r, layer));
  if (!v) noResult(what(r, i, ts), *r.st);
  return toNumpy(std::move(*v));
}

py::array_t<double> readItem(
    const pyResultFile& r, const numOrName& item, const numOrName& t,
    std::optional<py::array_t<int64_t, py::array::c_style | py::array::forcecast>> elems) {
  const int32_t i = itemNo(r, item), ts = timestep(r, t);
  if (!elems) {
    std::vector<double> v = r.f().readItemData(i, ts);
    if (v.empty()) noResult(what(r, i, ts), *r.st);
    return toNumpy(std::move(v));
  }
  std::vector<int32_t> en;
  for (int64_t e : toVector<int64_t>(*elems, "elements")) en.push_back(element(r, e));
  if (en.empty()) throw py::value_error("elements must name at least one element.");
  auto v = r.f().readItemData(i, ts, en);
  if (!v) noResult(what(r, i, ts), *r.st);
  return toNumpy(std::move(*v));
}

py::array_t<double> readSeries(const pyResultFile& r, const numOrName& item, int64_t elem,
                               const numOrName& layer, int64_t start, int64_t stop) {
  const int32_t i = itemNo(r, item), e = element(r, elem);
  if (start < 0) throw py::index_error("start " + std::to_string(start) + " is negative.");
  const int64_t end = stop == -1 ? r.st->model().nt() : stop;  // as the facade resolves it
  if (stop < -1 || end < start)
    throw py::index_error("The timesteps from " + std::to_string(start) + " to " + std::to_string(end) +
                          " (stop " + std::to_string(stop) + ") are no range.");
  auto v =
      r.f().readTimeSeries(i, e, seriesLayer(r, e, layer), toInt32(start, "start"), toInt32(stop, "stop"));
  if (!v) noResult("The series of item '" + r.f().items()[i] + "'", *r.st);
  return toNumpy(std::move(*v));
}

py::tuple readSeriesUET(const pyResultFile& r, const numOrName& item, int64_t start, int64_t end,
                        int64_t filterItem, double filterMin, double filterMax) {
  std::vector<int64_t> dt;
  std::vector<double> d;
  if (r.f().readTimeSeriesUET(itemNo(r, item), start, end, dt, d, toInt32(filterItem, "filter_item"),
                              filterMin, filterMax) < 0)
    dt.clear(), d.clear();  // nothing selected
  return py::make_tuple(toNumpy(std::move(dt)), toNumpy(std::move(d)));
}

using f64array = py::array_t<double, py::array::c_style | py::array::forcecast>;

py::tuple extractSection(const pyResultFile& r, const numOrName& item, const numOrName& t, const f64array& x,
                         const f64array& y, const f64array& z, double dist) {
  std::vector<double> xs = toVector<double>(x, "x"), ys = toVector<double>(y, "y"),
                      zs = toVector<double>(z, "z");
  if (xs.size() < 2 || xs.size() != ys.size())
    throw py::value_error("x and y must be of one length, with at least two points.");
  if (zs.empty()) throw py::value_error("z must hold at least one depth.");
  if (!(dist > 0)) throw py::value_error("dist must be positive.");
  std::vector<double> d, v, xc, yc;
  const int32_t i = itemNo(r, item), ts = timestep(r, t);
  int32_t rc = r.f().extractSectionCart(i, ts, xs, ys, zs, dist, d, v, xc, yc);
  if (rc != 0) noResult("The section of " + what(r, i, ts), *r.st);
  const auto nd = static_cast<py::ssize_t>(d.size()), nz = static_cast<py::ssize_t>(zs.size());
  return py::make_tuple(toNumpy(std::move(d)), toNumpy(std::move(v), {nd, nz}), toNumpy(std::move(xc)),
                        toNumpy(std::move(yc)));
}

py::array_t<uint32_t> paintLayer(const pyResultFile& r, const numOrName& item, const numOrName& t,
                                 const numOrName& layer, int32_t width, int32_t height,
                                 std::tuple<double, double, double, double> extent,
                                 std::pair<double, double> zrange, const std::vector<int64_t>& colors,
                                 int32_t nz, double radius) {
  std::vector<int32_t> colours = toColours(colors);
  std::vector<uint8_t> bitmap = newBitmap(width, height);
  auto [xmin, xmax, ymin, ymax] = extent;
  const int32_t i = itemNo(r, item), ts = timestep(r, t);
  r.f().readLayerAndInterpOnBitmap(i, ts, layerCode(r, layer), bitmap, width, height,
                                   nz > 0 ? nz : static_cast<int32_t>(colours.size()), xmin, xmax, ymin, ymax,
                                   zrange.first, zrange.second, colours, radius, 0.0);
  return bitmapToNumpy(std::move(bitmap), width, height);
}

py::array times(const pyResultFile& r) {
  const thWrapper::thModelInfoWrapper& mi = r.st->model();
  std::vector<int64_t> t(static_cast<size_t>(std::max(mi.nt(), 0)));
  for (int32_t k = 0; k < mi.nt(); ++k) t[k] = mi.ts2DT(k);
  return toNumpy(std::move(t)).attr("astype")("datetime64[s]");
}

void close(pyResultFile& r) {
  if (r.st->rf) r.st->rf->Dispose();
  r.st->rf.reset();
}

void defineReads(py::class_<pyResultFile>& c);

}  // namespace

void defineResultFile(py::module_& m) {
  py::class_<pyResultFile> c(
      m, "ResultFile",
      "A result file of the model (NC, EMB, RESTART, DECOUPLED, TEXT0D, TEXT1D), opened and\n"
      "its header read. Items, timesteps and layers are given by number or by name.");
  c.def(py::init(&openFile), py::arg("path"),
        "Opens a result file and reads its header: the mesh, the layers, the cells and the time axis.\n"
        "FileNotFoundError for a missing file, thalmod.Error when the library cannot read it.");
  c.def("close", &close,
        "Releases the file; every later call on it or its mesh and model raises ValueError.");
  c.def_property_readonly(
      "closed", [](const pyResultFile& r) { return !r.st->rf; }, "True after close().");
  c.def(
      "__enter__", [](pyResultFile& r) -> pyResultFile& { return r; }, "The file itself, for `with`.");
  c.def(
      "__exit__", [](pyResultFile& r, py::args) { close(r); }, "Closes the file at the end of `with`.");
  c.def_property_readonly(
      "filename", [](const pyResultFile& r) { return r.f().filename(); }, "The file's name.");
  c.def_property_readonly(
      "format", [](const pyResultFile& r) { return r.f().format(); },
      "The format number: 1 EMB, 2 TEXT0D, 3 TEXT1D, 10 NC, 100 RESTART, 101 DECOUPLED.");
  c.def_property_readonly(
      "file_version", [](const pyResultFile& r) { return r.f().fileVersion(); },
      "The version of the file read (0 when it has none).");
  c.def_property_readonly(
      "items", [](const pyResultFile& r) { return r.f().items(); }, "The item names, in order.");
  c.def_property_readonly(
      "nt", [](const pyResultFile& r) { return r.st->model().nt(); },
      "The number of timesteps (of the first physical file of an EMB run).");
  c.def_property_readonly("times", &times, "The time of each timestep, as numpy datetime64[s].");
  c.def_property_readonly(
      "mesh",
      [](const pyResultFile& r) {
        return pyMesh{r.st, nullptr};
      },
      "The mesh (thalmod.Mesh), valid while the file is open.");
  c.def_property_readonly(
      "model", [](const pyResultFile& r) { return pyModel{r.st}; },
      "The model description (thalmod.Model): layers, cells, time axis.");
  c.def(
      "to_string", [](const pyResultFile& r, int32_t level) { return r.f().toString(level); },
      py::arg("level") = 0, "The library's report of the file; higher levels say more.");
  c.def(
      "__repr__",
      [](const pyResultFile& r) {
        return "<thalmod.ResultFile '" + r.st->path + "'" + (r.st->rf ? "" : " (closed)") + ">";
      },
      "The file's name, and whether it is closed.");
  defineReads(c);
}

namespace {

// The reads and the writing of the UGRID file.
void defineReads(py::class_<pyResultFile>& c) {
  c.def("read_layer", &readLayer, py::arg("item"), py::arg("timestep"), py::arg("layer") = "top",
        "One value per element (float64, noe values) of an item at a timestep: layer 0 (the deepest) to\n"
        "nol-1, 'surface' (nol-1), 'bottom' or -1 (each element's bottom cell), 'top' or 999 (each\n"
        "element's top-most value). delval marks elements that do not reach the layer. timestep: a\n"
        "number or a date-time 'YYYY-MM-DD HH:MM:SS' of the run.");
  c.def("read_item", &readItem, py::arg("item"), py::arg("timestep"), py::arg("elements") = py::none(),
        "All values of an item at a timestep (a 3-D item by cell number), or with `elements` the columns\n"
        "of those elements, one after the other, bottom up.");
  c.def("read_series", &readSeries, py::arg("item"), py::arg("elem"), py::arg("layer") = "surface",
        py::arg("start") = 0, py::arg("stop") = -1,
        "The values of one cell (element and layer; any layer for a 2-D item) over timesteps start to\n"
        "stop-1; stop -1 is the end of the first physical file.");
  c.def("read_series_uet", &readSeriesUET, py::arg("item"), py::arg("start") = -1,
        py::arg("end") = 2147483647, py::arg("filter_item") = -1, py::arg("filter_min") = -1e37,
        py::arg("filter_max") = 1e37,
        "A TEXT0D column with its own time stamps between start and end (seconds since 1970), as a\n"
        "tuple (times int64, values); where filter_item is given, only lines whose value of that item\n"
        "lies between filter_min and filter_max. Empty arrays when nothing is selected.");
  c.def(
      "read_profile",
      [](const pyResultFile& r, int32_t item, int32_t t, int32_t elem) {
        std::vector<double> z, d;
        r.f().readProfile(item, t, elem, z, d);
      },
      py::arg("item"), py::arg("timestep"), py::arg("elem"),
      "The facade's profile read, which is not finished: it always raises thalmod.Error.");
  c.def("extract_section", &extractSection, py::arg("item"), py::arg("timestep"), py::arg("x"), py::arg("y"),
        py::arg("z"), py::arg("dist"),
        "Samples an item every `dist` along the polyline (x, y) at the depths z. Returns (d, v, xc, yc):\n"
        "distances, values of shape (len(d), len(z)) (delval outside the mesh or below the sea bed) and\n"
        "the points sampled.");
  c.def("paint_layer", &paintLayer, py::arg("item"), py::arg("timestep"), py::arg("layer"), py::arg("width"),
        py::arg("height"), py::arg("extent"), py::arg("zrange"), py::arg("colors"), py::arg("nz") = 0,
        py::arg("radius") = -1.0,
        "Paints a layer over extent=(xmin, xmax, ymin, ymax) as a (height, width) uint32 array of colours\n"
        "0xAARRGGBB, top row first, on a scale of nz steps (default: len(colors)) over zrange=(zmin,\n"
        "zmax). Pixels that no element centre reaches within `radius` (map units; negative: chosen from\n"
        "the extent) stay 0.");
  c.def(
      "to_ugrid", [](const pyResultFile& r, const std::string& path) { r.f().toUgrid(path); },
      py::arg("path"),
      "Writes the whole run as a NetCDF-4 file of the UGRID 1.0 and CF conventions, which xarray opens.");
  c.def_property_readonly_static(
      "delval", [](py::object) { return thResultFileWrapper::delVal(); },
      "The deleted value (-1e-30 as float32) that marks missing values.");
  c.def_static("str_to_dt", &thResultFileWrapper::strDT2LongDT, py::arg("text"),
               "Seconds since 1970-01-01 of a date-time 'YYYY-MM-DD HH:MM:SS'.");
  c.def_static("dt_to_str", &thResultFileWrapper::longDT2StrDT, py::arg("dt"),
               "The text 'YYYY-MM-DD HH:MM:SS' of seconds since 1970-01-01.");
}

}  // namespace

}  // namespace thPy
