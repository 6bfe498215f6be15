// thal mesh SUBCOMMAND: mesh files for a person preparing a model run.
//
//   info MESH            counts, extent, projection, boundaries, orthogonality and worst angles
//   convert IN OUT       text <-> binary, by extension
//   optimise IN OUT      the node movers, then initMesh, with the orthogonality before and after
//   project IN OUT --to  into longitude/latitude or a UTM zone
//   merge A B OUT        two meshes joined at their common nodes
//
// A mesh file does not store its projection: --projection gives it (UTM32 unless given).
// Text mesh files are named .mesh, .emt or .txt, binary ones .emb, .bmesh or .bin. A binary
// file holds coordinates as float32, so that UTM coordinates keep about a tenth of a metre.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "mesh/thMesh2D.h"
#include "support/VFiles.h"
#include "support/VStr.h"
#include "thalCommands.h"
#include "thalResult.h"

namespace thTool {

namespace {

using thalmod::thMesh2D;

const char* meshUsage =
    "thal mesh info MESH | convert IN OUT | optimise IN OUT [--passes N] [--tri-only] [--even F] | "
    "project IN OUT --to lonlat|utmNN | merge A B OUT  (each with [--projection P])";

// Degrees to two decimals.
std::string deg(double d) {
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.2f", d);
  return buf;
}

// 0 text, 1 binary: the mesh's meshFmt.
int32_t formatOf(const std::string& path) {
  const std::string ext = VCppLib::VStr::toLower(VCppLib::extPart(path));
  if (ext == "mesh" || ext == "emt" || ext == "txt") return 0;
  if (ext == "emb" || ext == "bmesh" || ext == "bin") return 1;
  throw ToolError(
      "Cannot tell the format of the mesh file '" + path +
      "' from its extension; name text meshes .mesh, .emt or .txt and binary ones .emb, .bmesh or .bin.");
}

// LONLAT, or UTM with a zone of 1 to 60 (negative south of the equator), in capitals.
std::string parseProjection(const std::string& text) {
  const std::string p = VCppLib::VStr::toUpper(text);
  if (p == "LONLAT") return p;
  if (p.rfind("UTM", 0) == 0 && p.size() > 3) {
    const std::string z = p.substr(3);
    char* end = nullptr;
    const long zone = std::strtol(z.c_str(), &end, 10);
    if (*end == '\0' && zone != 0 && zone >= -60 && zone <= 60) return "UTM" + std::to_string(zone);
  }
  throw ToolError(
      "The projection '" + text +
      "' is neither LONLAT nor UTM followed by a zone of 1 to 60 (UTM32; UTM-33 south of the equator).");
}

std::unique_ptr<thMesh2D> readMesh(const std::string& path, const std::string& projection) {
  const int32_t fmt = formatOf(path);
  checkReadable(path);
  auto m = std::make_unique<thMesh2D>();
  m->meshFmt = fmt;
  m->projection = projection;
  try {
    m->readMeshFromFile(path);
  } catch (const VCppLib::VException& e) {
    throw ToolError("Cannot read the mesh file '" + path + "': " + e.message);
  }
  return m;
}

void writeMesh(thMesh2D& m, const std::string& path, const std::vector<std::string>& inputs) {
  const int32_t fmt = formatOf(path);
  for (const std::string& in : inputs) {
    std::error_code ec;
    if (std::filesystem::equivalent(in, path, ec))
      throw ToolError("The output '" + path + "' is the input file '" + in +
                      "'; give the new mesh another name.");
  }
  std::string bytes;
  if (fmt == 0) {
    bytes = m.toString();
  } else {
    char* block = nullptr;
    const int32_t len = m.writeMeshBuffer(block);
    bytes.assign(block, static_cast<size_t>(len));
    delete[] block;
  }
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (out) out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  out.close();
  if (!out) throw ToolError("Cannot write the mesh file '" + path + "': " + std::strerror(errno) + ".");
}

// The orthogonality measures of an initialised mesh.
struct Quality {
  bool orthogonal = false;
  int32_t facesOff = 0;            // inner faces more than 5 degrees off a right angle to their Voronoi line
  double maxDev = 0, meanDev = 0;  // degrees, over the inner faces
  int32_t triangles = 0, obtuse = 0;            // triangles, and those with a corner of 90 degrees or more
  double maxCorner = 0;                         // degrees, over all elements
  std::vector<int32_t> worstFaces, worstElems;  // up to 5 each, worst first
};

// Indices of the (up to) k largest values, largest first; NaN counts as smallest.
std::vector<int32_t> largest(const std::vector<double>& v, size_t k) {
  std::vector<int32_t> idx(v.size());
  for (size_t i = 0; i < v.size(); i++) idx[i] = static_cast<int32_t>(i);
  auto key = [&v](int32_t i) { return std::isnan(v[i]) ? -INFINITY : v[i]; };
  k = std::min(k, idx.size());
  std::partial_sort(idx.begin(), idx.begin() + k, idx.end(),
                    [&](int32_t a, int32_t b) { return key(a) > key(b) || (key(a) == key(b) && a < b); });
  idx.resize(k);
  return idx;
}

Quality measure(const thMesh2D& m, std::vector<double>* devs = nullptr,
                std::vector<double>* corners = nullptr) {
  Quality q;
  q.orthogonal = m.isOrthogonal;
  std::vector<double> d(m.anglesVF, m.anglesVF + std::max(m.nivf, 0));
  double sum = 0;
  int32_t counted = 0;
  for (double a : d) {
    if (std::isnan(a)) continue;
    q.facesOff += a > 5.0 ? 1 : 0;
    q.maxDev = std::max(q.maxDev, a);
    sum += a;
    counted++;
  }
  q.meanDev = counted > 0 ? sum / counted : 0;
  std::unique_ptr<double[]> mx(m.anglesMaxPerElem());
  std::vector<double> c(mx.get(), mx.get() + m.noe);
  for (int32_t e = 0; e < m.noe; e++) {
    c[e] *= 180.0 / M_PI;
    q.maxCorner = std::max(q.maxCorner, c[e]);
    if (m.nonpe[e] != 3) continue;
    q.triangles++;
    q.obtuse += c[e] >= 90.0 ? 1 : 0;
  }
  q.worstFaces = largest(d, 5);
  q.worstElems = largest(c, 5);
  if (devs) *devs = std::move(d);
  if (corners) *corners = std::move(c);
  return q;
}

void printInfo(thMesh2D& m, const std::string& path, const std::string& projection, bool givenProjection) {
  std::ostream& out = std::cout;
  out << "Mesh file:\t" << path << (m.meshFmt == 0 ? " (text)" : " (binary)") << "\n";
  out << "Projection:\t" << projection
      << (givenProjection ? "" : " (assumed: a mesh file does not store it; --projection sets it)") << "\n";
  int32_t tri = 0, quad = 0;
  for (int32_t e = 0; e < m.noe; e++) {
    tri += m.nonpe[e] == 3 ? 1 : 0;
    quad += m.nonpe[e] == 4 ? 1 : 0;
  }
  out << "Nodes:\t" << m.non << "\n";
  out << "Elements:\t" << m.noe << " (" << tri << " triangles, " << quad << " quadrilaterals";
  if (m.noe - tri - quad > 0) out << ", " << m.noe - tri - quad << " of other node counts";
  out << ")\n";
  out << "Faces:\t" << m.nvf << " (" << m.nivf << " inner, " << m.tnbe << " open boundary, "
      << m.nvf - m.nivf - m.tnbe << " closed)\n";
  if (m.non > 0) {
    const auto [x0, x1] = std::minmax_element(m.nxCoor, m.nxCoor + m.non);
    const auto [y0, y1] = std::minmax_element(m.nyCoor, m.nyCoor + m.non);
    out << "Extent:\tx " << num(*x0) << " to " << num(*x1) << ", y " << num(*y0) << " to " << num(*y1)
        << "\n";
  }
  out << "Area:\t" << num(m.totArea) << " m2, mean element size " << num(m.meanElemSize) << " m\n";
  out << "Open boundaries:\t" << m.nBnd << "\n";
  for (int32_t b = 0; b < m.nBnd; b++)
    out << "\tboundary " << m.bndId[b] << ": " << m.bndNoFaces[b] << " faces\n";
  std::vector<double> devs, corners;
  const Quality q = measure(m, &devs, &corners);
  out << "Orthogonal:\t" << (q.orthogonal ? "yes" : "no") << "\n";
  out << "Faces off by more than 5 degrees:\t" << q.facesOff << " of " << m.nivf << " inner faces\n";
  out << "Face deviation:\tlargest " << deg(q.maxDev) << " degrees, mean " << deg(q.meanDev) << " degrees\n";
  out << "Triangles with a corner of 90 degrees or more:\t" << q.obtuse << " of " << q.triangles << "\n";
  out << "Worst faces (deviation from a right angle):\n";
  for (int32_t f : q.worstFaces)
    out << "\tface " << f << " at " << num(m.vfxCoor[f]) << "," << num(m.vfyCoor[f]) << ": " << deg(devs[f])
        << " degrees\n";
  out << "Worst elements (largest corner angle):\n";
  for (int32_t e : q.worstElems)
    out << "\telement " << e << " at " << num(m.exCoor[e]) << "," << num(m.eyCoor[e]) << ": "
        << deg(corners[e]) << " degrees\n";
}

int meshInfo(const Args& a, const std::string& projection) {
  a.expectPositional(2, "thal mesh info MESH [--projection P]");
  auto m = readMesh(a.positional[1], projection);
  printInfo(*m, a.positional[1], projection, a.has("--projection"));
  return 0;
}

int meshConvert(const Args& a, const std::string& projection) {
  a.expectPositional(3, "thal mesh convert IN OUT [--projection P]");
  const std::string in = a.positional[1], out = a.positional[2];
  auto m = readMesh(in, projection);
  writeMesh(*m, out, {in});
  std::cout << "Wrote " << out << (formatOf(out) == 0 ? " (text)" : " (binary)") << ": " << m->non
            << " nodes, " << m->noe << " elements.\n";
  return 0;
}

void printQualityRow(const std::string& label, const std::string& before, const std::string& after) {
  std::printf("%-48s %-14s %s\n", label.c_str(), before.c_str(), after.c_str());
}

int meshOptimise(const Args& a, const std::string& projection, bool triOnly) {
  a.expectPositional(3, "thal mesh optimise IN OUT [--passes N] [--tri-only] [--even F] [--projection P]");
  const std::string in = a.positional[1], out = a.positional[2];
  const int passes = parseInt(a.get("--passes", "3"), "number of passes");
  if (passes < 0) throw ToolError("The number of passes '" + a.get("--passes", "") + "' must be 0 or more.");
  const double even = parseDouble(a.get("--even", "0"), "factor --even");
  if (even < 0 || even > 1)
    throw ToolError("The factor --even '" + a.get("--even", "") + "' must lie between 0 and 1.");
  formatOf(out);  // a name that cannot be written is found before the work
  auto m = readMesh(in, projection);
  const Quality before = measure(*m);
  // The Voronoi points of the moved nodes are computed afresh: kept ones would belong to the
  // old positions. Areas for the move toward large elements come from an initMesh per pass.
  auto refresh = [&m] {
    m->hasVoronoi = false;
    m->initMesh();
  };
  if (even == 0) {
    m->optimCenterNodes(passes, triOnly);
  } else {
    for (int p = 0; p < passes; p++) {
      m->optimCenterNodes(1, triOnly);
      refresh();
      m->optimMoveNodesTowardLargeElems(even, triOnly);
    }
  }
  refresh();
  const Quality after = measure(*m);
  writeMesh(*m, out, {in});
  std::printf("%d passes%s%s; wrote %s.\n", passes, triOnly ? ", only among triangles" : "",
              even > 0 ? (", toward large elements by " + num(even)).c_str() : "", out.c_str());
  printQualityRow("", "before", "after");
  printQualityRow("Orthogonal", before.orthogonal ? "yes" : "no", after.orthogonal ? "yes" : "no");
  printQualityRow("Inner faces off by more than 5 degrees", std::to_string(before.facesOff),
                  std::to_string(after.facesOff));
  printQualityRow("Largest face deviation, degrees", deg(before.maxDev), deg(after.maxDev));
  printQualityRow("Mean face deviation, degrees", deg(before.meanDev), deg(after.meanDev));
  printQualityRow("Triangles with a corner of 90 degrees or more", std::to_string(before.obtuse),
                  std::to_string(after.obtuse));
  printQualityRow("Largest corner angle, degrees", deg(before.maxCorner), deg(after.maxCorner));
  return 0;
}

int meshProject(const Args& a, const std::string& projection) {
  a.expectPositional(3, "thal mesh project IN OUT --to lonlat|utmNN [--projection P]");
  const std::string in = a.positional[1], out = a.positional[2];
  const std::string target = parseProjection(a.required("--to"));
  if (target == projection)
    throw ToolError("The mesh is in " + projection + " already (--projection); there is nothing to project.");
  formatOf(out);
  auto m = readMesh(in, projection);
  // Voronoi points are computed afresh from the projected nodes (the conversions keep the old
  // ones, which would then lie in the old coordinates).
  if (!m->isLonLat) {
    m->hasVoronoi = false;
    m->toLonLat();
  }
  if (target != "LONLAT") {
    m->hasVoronoi = false;
    m->toUTM(std::stoi(target.substr(3)));
  }
  writeMesh(*m, out, {in});
  std::cout << "Projected " << m->non << " nodes from " << projection << " to " << target << "; wrote " << out
            << ".\n";
  return 0;
}

int meshMerge(const Args& a, const std::string& projection) {
  a.expectPositional(4, "thal mesh merge A B OUT [--projection P]");
  const std::string fa = a.positional[1], fb = a.positional[2], out = a.positional[3];
  formatOf(out);
  auto ma = readMesh(fa, projection);
  auto mb = readMesh(fb, projection);
  const int32_t bNodes = mb->non, bElems = mb->noe;
  std::unique_ptr<thMesh2D> r(ma->mergeMesh(*mb));  // mb's arrays go with the copy
  // The merged mesh comes with the default projection; it is in the inputs' one.
  if (r->projection != projection) {
    r->projection = projection;
    r->initMesh();
  }
  writeMesh(*r, out, {fa, fb});
  const int32_t joined = ma->non + bNodes - r->non;
  std::cout << "Merged " << fa << " (" << ma->non << " nodes, " << ma->noe << " elements) and " << fb << " ("
            << bNodes << " nodes, " << bElems << " elements): " << r->non << " nodes (" << joined
            << " of the second mesh's nodes joined the first's), " << r->noe
            << " elements, inner faces: " << r->nivf << "; wrote " << out << ".\n";
  return 0;
}

}  // namespace

int cmdMesh(int argc, char** argv) {
  // --tri-only is a switch without a value; the other options take one.
  std::vector<char*> rest;
  bool triOnly = false;
  for (int i = 0; i < argc; i++) {
    if (i >= 3 && std::strcmp(argv[i], "--tri-only") == 0)
      triOnly = true;
    else
      rest.push_back(argv[i]);
  }
  if (rest.size() < 3) throw ToolError(std::string("Usage: ") + meshUsage);
  const std::string sub = rest[2];
  std::set<std::string> allowed = {"--projection"};
  if (sub == "optimise" || sub == "optimize") allowed.insert({"--passes", "--even"});
  if (sub == "project") allowed.insert("--to");
  if (triOnly && sub != "optimise" && sub != "optimize")
    throw ToolError("Unknown option --tri-only for 'thal mesh " + sub + "'.");
  const Args a = Args::parse("mesh " + sub, static_cast<int>(rest.size()), rest.data(), 2, allowed);
  const std::string projection = parseProjection(a.get("--projection", "UTM32"));
  if (sub == "info") return meshInfo(a, projection);
  if (sub == "convert") return meshConvert(a, projection);
  if (sub == "optimise" || sub == "optimize") return meshOptimise(a, projection, triOnly);
  if (sub == "project") return meshProject(a, projection);
  if (sub == "merge") return meshMerge(a, projection);
  throw ToolError("Unknown mesh command '" + sub +
                  "'; it is one of info, convert, optimise, project, merge.");
}

}  // namespace thTool
