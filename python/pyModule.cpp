// The module thalmod: its Error class, the shared helpers, and the painting of gridded bathymetry.
#include <limits>

#include "facade/miscWrapper.h"
#include "python/thalmodPy.h"
#include "support/VCppLib.h"

namespace thPy {

thWrapper::thResultFileWrapper& fileState::file() const {
  if (!rf) throw py::value_error("The result file '" + path + "' is closed.");
  return *rf;
}

void noResult(const std::string& what, const fileState& st) {
  throw VCppLib::VException(what + " could not be read from '" + st.path + "'.");
}

int32_t checkIndex(int64_t i, int64_t n, const char* what) {
  if (i < 0 || i >= n)
    throw py::index_error(std::string(what) + " " + std::to_string(i) + " is out of range: there are " +
                          std::to_string(n) + " (0 to " + std::to_string(n - 1) + ").");
  return static_cast<int32_t>(i);
}

int32_t toInt32(int64_t v, const char* what) {
  if (v < std::numeric_limits<int32_t>::min() || v > std::numeric_limits<int32_t>::max()) {
    PyErr_SetString(PyExc_OverflowError, (std::string(what) + " " + std::to_string(v) +
                                          " does not fit the library's 32-bit numbers.")
                                             .c_str());
    throw py::error_already_set();
  }
  return static_cast<int32_t>(v);
}

std::vector<int32_t> toColours(const std::vector<int64_t>& colors) {
  if (colors.empty()) throw py::value_error("colors must hold at least one colour.");
  std::vector<int32_t> out;
  for (int64_t c : colors) {
    if (c < std::numeric_limits<int32_t>::min() || c > std::numeric_limits<uint32_t>::max())
      throw py::value_error("The colour " + std::to_string(c) + " is not a 32-bit colour 0xAARRGGBB.");
    out.push_back(static_cast<int32_t>(static_cast<uint32_t>(c)));
  }
  return out;
}

std::vector<uint8_t> newBitmap(int32_t width, int32_t height) {
  // A limit well below what the 32-bit pixel counts of the painting can address.
  if (width <= 0 || height <= 0 || static_cast<int64_t>(width) * height > (int64_t{1} << 28))
    throw py::value_error("The picture size " + std::to_string(width) + "x" + std::to_string(height) +
                          " is not a positive size of at most 2^28 pixels.");
  return std::vector<uint8_t>(4 * static_cast<size_t>(width) * height, 0);
}

py::array_t<uint32_t> bitmapToNumpy(std::vector<uint8_t>&& bitmap, int32_t width, int32_t height) {
  auto heap = std::make_unique<std::vector<uint8_t>>(std::move(bitmap));
  auto* pixels = reinterpret_cast<uint32_t*>(heap->data());  // new[] memory: aligned for uint32
  py::capsule owner(heap.get(), [](void* p) { delete static_cast<std::vector<uint8_t>*>(p); });
  heap.release();
  return py::array_t<uint32_t>({static_cast<py::ssize_t>(height), static_cast<py::ssize_t>(width)}, pixels,
                               owner);
}

namespace {

using extent4 = std::tuple<double, double, double, double>;

py::array_t<uint32_t> paintBathy(const std::string& path, int32_t width, int32_t height, extent4 extent,
                                 const std::vector<int64_t>& colorList,
                                 std::optional<std::vector<double>> breaks,
                                 std::optional<std::pair<double, double>> zrange, int32_t nz, double p) {
  std::vector<int32_t> colors = toColours(colorList);
  if (breaks.has_value() == zrange.has_value())
    throw py::value_error(
        "Give either breaks (classes) or zrange (a continuous scale), not both or neither.");
  std::vector<uint8_t> bitmap = newBitmap(width, height);
  auto [xmin, xmax, ymin, ymax] = extent;
  if (breaks)
    thWrapper::miscWrapper::readNetCdfBathyAndInterpOnBitmap(path, bitmap, width, height, xmin, xmax, ymin,
                                                             ymax, *breaks, colors, p);
  else
    thWrapper::miscWrapper::readNetCdfBathyAndInterpOnBitmap(
        path, bitmap, width, height, nz > 0 ? nz : static_cast<int32_t>(colors.size()), xmin, xmax, ymin,
        ymax, zrange->first, zrange->second, colors, p);
  return bitmapToNumpy(std::move(bitmap), width, height);
}

}  // namespace

}  // namespace thPy

PYBIND11_MODULE(thalmod, m) {
  namespace py = pybind11;
  m.doc() = "Result files, meshes and model descriptions of the Thalmod marine model, as numpy arrays.";
  // Failures of the library, with the library's own sentence as the message.
  static py::exception<VCppLib::VException> error(m, "Error", PyExc_RuntimeError);
  py::register_exception_translator([](std::exception_ptr e) {
    try {
      if (e) std::rethrow_exception(e);
    } catch (const VCppLib::VException& x) {
      error(x.message.c_str());
    }
  });
  m.attr("delval") = thWrapper::thResultFileWrapper::delVal();
  thPy::defineResultFile(m);
  thPy::defineMeshAndModel(m);
  m.def("paint_bathy", &thPy::paintBathy, py::arg("path"), py::arg("width"), py::arg("height"),
        py::arg("extent"), py::arg("colors"), py::arg("breaks") = py::none(), py::arg("zrange") = py::none(),
        py::arg("nz") = 0, py::arg("p") = 2.0,
        "Paints the gridded bathymetry of a NetCDF file (x and y coordinate variables, depths as the third\n"
        "variable) over extent=(xmin, xmax, ymin, ymax) as a (height, width) uint32 array of colours\n"
        "0xAARRGGBB, top row first; -1 (0xFFFFFFFF) outside the grid. Colours by classes between the\n"
        "ascending breaks, or on a continuous scale of nz steps (default: len(colors)) over zrange=(zmin,\n"
        "zmax). colors: 32-bit colours 0xAARRGGBB (as signed or unsigned ints).");
}
