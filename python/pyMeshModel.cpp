// thalmod.Mesh and thalmod.Model: the mesh and model description facades, as numpy arrays.
#include "python/thalmodPy.h"

namespace thPy {

namespace {

using thWrapper::thMesh2DWrapper;
using thWrapper::thModelInfoWrapper;
using f64array = py::array_t<double, py::array::c_style | py::array::forcecast>;

// A read-only property of the array that a facade getter hands out (a fresh copy, moved to numpy).
template <typename C, typename W, typename T>
void arrayProp(py::class_<C>& c, const char* name, std::vector<T> (W::*get)() const, const char* doc) {
  c.def_property_readonly(
      name, [get](const C& o) { return toNumpy((o.w().*get)()); }, doc);
}

// The same for arrays of two entries per face, as shape (nvf, 2).
void pairProp(py::class_<pyMesh>& c, const char* name, std::vector<int32_t> (thMesh2DWrapper::*get)() const,
              const char* doc) {
  c.def_property_readonly(
      name,
      [get](const pyMesh& o) {
        std::vector<int32_t> v = (o.w().*get)();
        const auto n = static_cast<py::ssize_t>(v.size() / 2);
        v.resize(2 * static_cast<size_t>(n));
        return toNumpy(std::move(v), {n, 2});
      },
      doc);
}

template <typename T>
py::list toList(std::vector<std::vector<T>>&& lists) {
  py::list out;
  for (auto& l : lists) out.append(toNumpy(std::move(l)));
  return out;
}

// Each element as a fan of triangles from its first node, for matplotlib's tripcolor.
py::tuple triangles(const pyMesh& o) {
  const std::vector<int32_t> en = o.w().en(), nonpe = o.w().nonpe();
  std::vector<int32_t> tri, elem;
  size_t at = 0;
  for (size_t e = 0; e < nonpe.size() && at + std::max(nonpe[e], 0) <= en.size(); at += nonpe[e], ++e)
    for (int32_t j = 1; j + 1 < nonpe[e]; ++j) {
      tri.insert(tri.end(), {en[at], en[at + j], en[at + j + 1]});
      elem.push_back(static_cast<int32_t>(e));
    }
  const auto n = static_cast<py::ssize_t>(elem.size());
  return py::make_tuple(toNumpy(std::move(tri), {n, 3}), toNumpy(std::move(elem)));
}

py::tuple sectionIntersections(const pyMesh& o, const f64array& x, const f64array& y) {
  std::vector<double> xs = toVector<double>(x, "xc"), ys = toVector<double>(y, "yc");
  if (xs.size() < 2 || xs.size() != ys.size())
    throw py::value_error("xc and yc must be of one length, with at least two points.");
  std::vector<int32_t> ise;
  std::vector<double> isd;
  o.w().sectionIntersections(xs, ys, ise, isd);
  return py::make_tuple(toNumpy(std::move(ise)), toNumpy(std::move(isd)));
}

void defineMesh(py::module_& m) {
  py::class_<pyMesh> c(m, "Mesh",
                       "The 2-D mesh of a result file (valid while the file is open), or a vertical\n"
                       "section mesh of Model.section_mesh. Every array is a fresh copy.");
  c.def_property_readonly(
      "noe", [](const pyMesh& o) { return o.w().noe(); }, "Number of elements.");
  c.def_property_readonly(
      "non", [](const pyMesh& o) { return o.w().non(); }, "Number of nodes.");
  c.def_property_readonly(
      "nvf", [](const pyMesh& o) { return o.w().nvf(); }, "Number of faces (element sides).");
  c.def_property_readonly(
      "nivf", [](const pyMesh& o) { return o.w().nivf(); }, "Number of inner faces.");
  c.def_property_readonly(
      "tnbe", [](const pyMesh& o) { return o.w().tnbe(); }, "Number of open boundary faces.");
  c.def_property_readonly(
      "is_orthogonal", [](const pyMesh& o) { return o.w().isOrthogonal(); },
      "No Voronoi test failed when the mesh was set up.");
  arrayProp(c, "node_x", &thMesh2DWrapper::nxCoor, "x of each node (non values).");
  arrayProp(c, "node_y", &thMesh2DWrapper::nyCoor, "y of each node.");
  arrayProp(c, "node_type", &thMesh2DWrapper::nt, "Node types: 0 inner, 1 to 98 open boundary, 99 closed.");
  arrayProp(c, "elem_x", &thMesh2DWrapper::exCoor, "x of each element centre (noe values).");
  arrayProp(c, "elem_y", &thMesh2DWrapper::eyCoor, "y of each element centre.");
  arrayProp(c, "voronoi_x", &thMesh2DWrapper::eVoronoiX, "x of each element's Voronoi point.");
  arrayProp(c, "voronoi_y", &thMesh2DWrapper::eVoronoiY, "y of each element's Voronoi point.");
  arrayProp(c, "nonpe", &thMesh2DWrapper::nonpe, "Number of nodes of each element.");
  arrayProp(c, "eni", &thMesh2DWrapper::eni, "First entry of each element in `en` and `evf`.");
  arrayProp(c, "en", &thMesh2DWrapper::en, "Nodes of all elements, element after element.");
  arrayProp(c, "evf", &thMesh2DWrapper::evf, "Faces of all elements, in the order of `en`'s entries.");
  arrayProp(c, "nivfpe", &thMesh2DWrapper::nivfpe, "Number of inner faces of each element.");
  arrayProp(c, "face_x", &thMesh2DWrapper::vfxCoor, "x of each face midpoint (nvf values).");
  arrayProp(c, "face_y", &thMesh2DWrapper::vfyCoor, "y of each face midpoint.");
  arrayProp(c, "face_length", &thMesh2DWrapper::vfl, "Length of each face in metres.");
  arrayProp(c, "face_normal_x", &thMesh2DWrapper::vfxNormL, "x of each face's unit normal.");
  arrayProp(c, "face_normal_y", &thMesh2DWrapper::vfyNormL, "y of each face's unit normal.");
  arrayProp(c, "face_type", &thMesh2DWrapper::vft, "Face types: 0 inner, 1 to 98 open boundary, 99 closed.");
  arrayProp(c, "angles_vf", &thMesh2DWrapper::anglesVF,
            "Deviation of each inner face from a right angle, degrees (empty without Voronoi points).");
  pairProp(c, "face_nodes", &thMesh2DWrapper::vfn, "The two nodes of each face, shape (nvf, 2).");
  pairProp(c, "face_elems", &thMesh2DWrapper::vfe, "The two sides of each face, shape (nvf, 2).");
  c.def_property_readonly(
      "is_acute",
      [](const pyMesh& o) {
        std::vector<bool> b = o.w().eIsAcute();
        py::array_t<bool> out(static_cast<py::ssize_t>(b.size()));
        std::copy(b.begin(), b.end(), out.mutable_data());
        return out;
      },
      "Whether each element passed its Voronoi test.");
  c.def("triangles", &triangles,
        "Every element as a fan of triangles: (triangles (n, 3) node numbers, element of each\n"
        "triangle), for matplotlib: tripcolor(node_x, node_y, tri, facecolors=values[elem]).");
  c.def(
      "circumference_nodes", [](const pyMesh& o) { return toNumpy(o.w().circumferenceNodes()); },
      "The nodes of the mesh's outer ring, each once.");
  c.def(
      "point_elem", [](const pyMesh& o, double x, double y) { return o.w().pointElem(x, y); }, py::arg("x"),
      py::arg("y"), "The element that holds the point, -1 outside the mesh.");
  c.def("section_intersections", &sectionIntersections, py::arg("xc"), py::arg("yc"),
        "The elements that the polyline (xc, yc) crosses, and the distance at the end of each stretch:\n"
        "(ise, isd); -1 in ise marks a stretch outside the mesh.");
  c.def(
      "node_elems", [](const pyMesh& o) { return toList(o.w().nodeElems()); },
      "For each node, its elements sorted around it.");
  c.def(
      "node_faces", [](const pyMesh& o) { return toList(o.w().nodevf()); },
      "For each node, its faces, counter-clockwise.");
  c.def(
      "angles_max_per_elem", [](const pyMesh& o) { return toNumpy(o.w().anglesMaxPerElem()); },
      "Largest corner angle of each element, radians.");
  c.def(
      "angles_vf_max_per_elem", [](const pyMesh& o) { return toNumpy(o.w().anglesVFMaxPerElem()); },
      "Largest face angle deviation of each element's inner faces, degrees.");
  c.def(
      "to_string", [](const pyMesh& o) { return o.w().toString(); }, "The library's report of the mesh.");
}

pyMesh sectionMesh(const pyModel& o,
                   const py::array_t<int32_t, py::array::c_style | py::array::forcecast>& ise,
                   const f64array& isd, std::optional<f64array> ish) {
  std::vector<int32_t> e = toVector<int32_t>(ise, "ise");
  std::vector<double> d = toVector<double>(isd, "isd"), h;
  if (ish) h = toVector<double>(*ish, "ish");
  if (e.empty() || d.size() != e.size() || (ish && h.size() != e.size()))
    throw py::value_error("ise, isd (and ish) must be of one length, with at least one stretch.");
  const int32_t noe = o.w().mesh2d.noe();
  for (int32_t x : e)
    if (x < -1 || x >= noe) checkIndex(x, noe, "Element of ise");
  thMesh2DWrapper w = ish ? o.w().ise2VMesh(e, d, h) : o.w().ise2VMesh(e, d);
  return pyMesh{nullptr, std::make_shared<thMesh2DWrapper>(w)};
}

void defineModel(py::module_& m) {
  py::class_<pyModel> c(m, "Model",
                        "The model description of a result file: time axis, layers (0 the deepest)\n"
                        "and the numbering of cells and faces. Valid while the file is open.");
  c.def_property_readonly(
      "mesh",
      [](const pyModel& o) {
        return pyMesh{o.owner, nullptr};
      },
      "The mesh.");
  c.def_property_readonly(
      "nol", [](const pyModel& o) { return o.w().nol(); }, "Number of layers.");
  c.def_property_readonly(
      "nt", [](const pyModel& o) { return o.w().nt(); }, "Number of timesteps.");
  c.def_property_readonly(
      "dt", [](const pyModel& o) { return o.w().dt(); }, "Timestep length in seconds.");
  c.def_property_readonly(
      "start_dt", [](const pyModel& o) { return o.w().startDT(); },
      "Time of timestep 0, seconds since 1970-01-01.");
  c.def_property_readonly(
      "layer_type", [](const pyModel& o) { return o.w().layerType(); }, "0: z-layers.");
  c.def_property_readonly(
      "top_depth", [](const pyModel& o) { return o.w().topDepth(); },
      "Depth of the upper edge of the top layer.");
  c.def_property_readonly(
      "tot_no_uvf", [](const pyModel& o) { return o.w().totNoUvf(); }, "Number of faces with U-points.");
  c.def_property_readonly(
      "tot_no_upnts", [](const pyModel& o) { return o.w().totNoUPnts(); }, "Number of U-points.");
  arrayProp(c, "ebli", &thModelInfoWrapper::ebli, "Bottom layer of each element.");
  arrayProp(c, "fbli", &thModelInfoWrapper::fbli, "Bottom layer of each face with U-points.");
  arrayProp(c, "botlayer_idx", &thModelInfoWrapper::botlayerIdx,
            "Cell number of each element's bottom cell.");
  arrayProp(c, "dz", &thModelInfoWrapper::dz, "Thickness of each layer.");
  arrayProp(c, "layer_depth", &thModelInfoWrapper::layerDepth, "Depth of each layer's centre.");
  arrayProp(c, "elem_bathy", &thModelInfoWrapper::elemBathy, "Depth of the sea bed of each element.");
  c.def_property_readonly(
      "fdz", [](const pyModel& o) { return toList(o.w().fdz()); },
      "For each face with U-points, the thickness of its layers from its bottom up.");
  c.def(
      "ts2dt", [](const pyModel& o, int32_t ts) { return o.w().ts2DT(ts); }, py::arg("ts"),
      "Time of a timestep, seconds since 1970-01-01.");
  c.def(
      "ts2str", [](const pyModel& o, int32_t ts) { return o.w().ts2StrDT(ts); }, py::arg("ts"),
      "Time of a timestep as 'YYYY-MM-DD HH:MM:SS'.");
  c.def(
      "find_timestep",
      [](const pyModel& o, int64_t dt, int32_t mode) { return o.w().findTimestep(dt, mode); }, py::arg("dt"),
      py::arg("mode") = 0,
      "Timestep of a time (seconds since 1970): mode 0 nearest, 1 floor, 2 ceil, clamped to the run;\n"
      "negative: the exact timestep or -1.");
  c.def(
      "to_string", [](const pyModel& o, int32_t level) { return o.w().toString(level); },
      py::arg("level") = 0, "The library's report of the model description.");
  c.def("section_mesh", &sectionMesh, py::arg("ise"), py::arg("isd"), py::arg("ish") = py::none(),
        "The vertical section mesh along a section (ise, isd of Mesh.section_intersections; ish: surface\n"
        "heights of the stretches), as a Mesh of its own: x the distance, y the height.");
}

}  // namespace

void defineMeshAndModel(py::module_& m) {
  defineMesh(m);
  defineModel(m);
}

}  // namespace thPy
