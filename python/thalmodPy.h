// What the sources of the Python module share: the open result file behind the Python objects,
// the hand-over of vectors to numpy, and the checks of the caller's arguments.
//
// Python objects never hold a facade view that could outlive its owner: ResultFile, its Mesh and
// its Model all hold the same fileState, and every call goes through fileState::file(), which
// raises ValueError once the file is closed. The GIL stays held during the library's calls: a
// result file belongs to one caller at a time, and the GIL is what makes that so.
#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "facade/thResultFileWrapper.h"

namespace thPy {

namespace py = pybind11;

// An item, a timestep or a layer, given by number or by name.
using numOrName = std::variant<int64_t, std::string>;

// The facade object of an open result file, shared by the Python objects over it.
struct fileState {
  std::unique_ptr<thWrapper::thResultFileWrapper> rf;  // null once closed
  std::string path;
  thWrapper::thResultFileWrapper& file() const;
  thWrapper::thModelInfoWrapper& model() const { return *file().mInfo; }
};

// The mesh of a result file (owner set), or a mesh made for the caller (own set).
struct pyMesh {
  std::shared_ptr<fileState> owner;
  std::shared_ptr<thWrapper::thMesh2DWrapper> own;
  thWrapper::thMesh2DWrapper& w() const { return own ? *own : owner->model().mesh2d; }
};

struct pyModel {
  std::shared_ptr<fileState> owner;
  thWrapper::thModelInfoWrapper& w() const { return owner->model(); }
};

// The vector becomes the numpy array's memory, without a copy; `shape` defaults to its length.
template <typename T>
py::array_t<T> toNumpy(std::vector<T>&& v, std::vector<py::ssize_t> shape = {}) {
  auto heap = std::make_unique<std::vector<T>>(std::move(v));
  if (shape.empty()) shape = {static_cast<py::ssize_t>(heap->size())};
  T* data = heap->data();
  py::capsule owner(heap.get(), [](void* p) { delete static_cast<std::vector<T>*>(p); });
  heap.release();  // the capsule owns it now
  return py::array_t<T>(shape, data, owner);
}

// A failed read that the facade reports as "no result", as the module's Error.
[[noreturn]] void noResult(const std::string& what, const fileState& st);

// Range checks: IndexError naming the argument and the valid range.
int32_t checkIndex(int64_t i, int64_t n, const char* what);
int32_t toInt32(int64_t v, const char* what);  // OverflowError beyond 32 bits

// A 1-D array of the caller's (any sequence of numbers) as a vector.
template <typename T>
std::vector<T> toVector(const py::array_t<T, py::array::c_style | py::array::forcecast>& a,
                        const char* what) {
  if (a.ndim() != 1) throw py::value_error(std::string(what) + " must be a 1-D sequence of numbers.");
  return std::vector<T>(a.data(), a.data() + a.size());
}

// Colours given as signed or unsigned 32-bit numbers; ValueError for anything else or none.
std::vector<int32_t> toColours(const std::vector<int64_t>& colors);
// (H, W) uint32 colours out of a bitmap of 4*W*H bytes, without a copy.
py::array_t<uint32_t> bitmapToNumpy(std::vector<uint8_t>&& bitmap, int32_t width, int32_t height);
// Checks a picture size and makes its bitmap, every pixel 0 (transparent) to begin with.
std::vector<uint8_t> newBitmap(int32_t width, int32_t height);

void defineResultFile(py::module_& m);
void defineMeshAndModel(py::module_& m);

}  // namespace thPy
