// Mesh files: the text format, the binary image and the XML record that points to a mesh file.
//
// Text format: lines split at "\n" (blank lines count), tokens split at any run of tab, blank,
// comma and semicolon; numbers read by formatted stream input, a token that is no number reads 0.
//   line 0               non  noe  [v]        v > 0: Voronoi points follow the elements
//   non node lines       x  y  [type]         a missing type is 99
//   noe element lines    node numbers (0-based), as many as the element has nodes
//   noe Voronoi lines    x  y                 only with v > 0
//
// Binary image: little-endian, no padding, no magic number. S = sum of nonpe.
//   offset                 type     count  field
//   0                      int32    1      non
//   4                      int32    1      noe
//   8                      float32  non    nxCoor
//   8+4non                 float32  non    nyCoor
//   8+8non                 int32    non    nt
//   8+12non                int32    noe    nonpe
//   8+12non+4noe           int32    S      en
//   8+12non+4noe+4S        float32  noe    eVoronoiX   (version 7 and up; always written)
//   8+12non+8noe+4S        float32  noe    eVoronoiY   (version 7 and up; always written)
// The version is that of the result file holding the image; -1 is a stand-alone mesh file.
// Versions 0 and 1 store node types shifted by one (stored 0 is 99).
#include <bit>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "mesh/thMesh2D.h"
#include "support/VFiles.h"
#include "support/VGeom.h"
#include "support/VStr.h"
#include "support/VXml.h"

namespace thalmod {

using VCppLib::VException;

namespace {

const char* const tokenDelims = "\t ,;";

// Formatted stream input of one token: leading white space skipped, what follows the number
// ignored, a token that does not begin with a number gives 0 and one out of range the nearest
// limit (what the stream stores on failure).
class TokenReader {
 public:
  int32_t readInt(const std::string& t) {
    reset(t);
    int32_t v = 0;
    ss >> v;
    return v;
  }
  double readDouble(const std::string& t) {
    reset(t);
    double v = 0;
    ss >> v;
    return v;
  }

 private:
  void reset(const std::string& t) {
    ss.clear();
    ss.str(t);
  }
  std::istringstream ss;
};

std::vector<std::string> splitTokens(const std::string& line) {
  return VCppLib::VStr::tokenize(line, tokenDelims, true);
}

// Primary arrays read from a file, handed to the mesh only when the whole file has been read.
struct MeshArrays {
  int32_t non = 0, noe = 0;
  std::vector<double> x, y;
  std::vector<int32_t> nt, nonpe, en;
  bool hasVoronoi = false;
  std::vector<double> vx, vy;
};

using VCppLib::newArrayFrom;

// Replaces the mesh's primary arrays (and Voronoi points) with those read.
void install(thMesh2D& m, const MeshArrays& a) {
  m.freeDerivedArrays();  // first: nxUTM may alias the nxCoor that goes
  for (auto* p : {&m.nxCoor, &m.nyCoor, &m.eVoronoiX, &m.eVoronoiY}) m.shares.release(*p);
  for (auto* p : {&m.nt, &m.nonpe, &m.en}) m.shares.release(*p);
  m.non = a.non;
  m.noe = a.noe;
  m.nxCoor = newArrayFrom(a.x);
  m.nyCoor = newArrayFrom(a.y);
  m.nt = newArrayFrom(a.nt);
  m.nonpe = newArrayFrom(a.nonpe);
  m.en = newArrayFrom(a.en);
  m.hasVoronoi = a.hasVoronoi;
  m.eVoronoiX = a.hasVoronoi ? newArrayFrom(a.vx) : nullptr;
  m.eVoronoiY = a.hasVoronoi ? newArrayFrom(a.vy) : nullptr;
}

// where: "the mesh text" or "mesh file <name>", for the messages.
void parseMeshText(const std::string& content, const std::string& where, MeshArrays& a) {
  std::vector<std::string> lines = VCppLib::VStr::tokenize(content, VCppLib::newline, false);
  // Files written on Windows end their lines in CR LF.
  for (std::string& l : lines)
    if (!l.empty() && l.back() == '\r') l.pop_back();
  auto lineRef = [&where](size_t i) { return "line " + std::to_string(i + 1) + " of " + where; };

  TokenReader rd;
  std::vector<std::string> tok = splitTokens(lines[0]);
  if (tok.size() < 2)
    throw VException("readMeshText: " + lineRef(0) +
                     " must hold the number of nodes and the number of elements.");
  a.non = rd.readInt(tok[0]);
  a.noe = rd.readInt(tok[1]);
  a.hasVoronoi = tok.size() > 2 && rd.readInt(tok[2]) > 0;
  if (a.non < 0 || a.noe < 0)
    throw VException("readMeshText: " + lineRef(0) + " announces " + std::to_string(a.non) + " nodes and " +
                     std::to_string(a.noe) + " elements; neither may be negative.");
  const int64_t needed = 1 + static_cast<int64_t>(a.non) + a.noe;
  if (static_cast<int64_t>(lines.size()) < needed)
    throw VException("readMeshText: " + where + " has " + std::to_string(lines.size()) + " lines, but " +
                     std::to_string(a.non) + " nodes and " + std::to_string(a.noe) + " elements need " +
                     std::to_string(needed) + ".");

  a.x.resize(a.non);
  a.y.resize(a.non);
  a.nt.resize(a.non);
  size_t li = 1;
  for (int32_t i = 0; i < a.non; i++, li++) {
    tok = splitTokens(lines[li]);
    if (tok.size() < 2)
      throw VException("readMeshText: " + lineRef(li) + " must hold the x and y of node " +
                       std::to_string(i) + ".");
    a.x[i] = rd.readDouble(tok[0]);
    a.y[i] = rd.readDouble(tok[1]);
    a.nt[i] = tok.size() > 2 ? rd.readInt(tok[2]) : 99;
  }

  a.nonpe.resize(a.noe);
  a.en.clear();
  for (int32_t e = 0; e < a.noe; e++, li++) {
    // A blank line is an element without nodes: its token count is its node count.
    tok = splitTokens(lines[li]);
    if (tok.size() > static_cast<size_t>(maxNodesPerElem))
      throw VException("readMeshText: " + lineRef(li) + " gives element " + std::to_string(e) + " " +
                       std::to_string(tok.size()) + " nodes; an element has at most " +
                       std::to_string(maxNodesPerElem) + ".");
    a.nonpe[e] = static_cast<int32_t>(tok.size());
    for (const std::string& t : tok) {
      const int32_t node = rd.readInt(t);
      if (node < 0 || node >= a.non)
        throw VException("readMeshText: " + lineRef(li) + " refers to node " + std::to_string(node) +
                         ", but the mesh has " + std::to_string(a.non) + " nodes.");
      a.en.push_back(node);
    }
  }

  // Voronoi points that are announced but missing or incomplete are computed by initMesh.
  if (a.hasVoronoi) {
    if (static_cast<int64_t>(lines.size()) < needed + a.noe) {
      a.hasVoronoi = false;
      return;
    }
    a.vx.resize(a.noe);
    a.vy.resize(a.noe);
    for (int32_t e = 0; e < a.noe; e++, li++) {
      tok = splitTokens(lines[li]);
      if (tok.size() < 2) {
        a.hasVoronoi = false;
        return;
      }
      a.vx[e] = rd.readDouble(tok[0]);
      a.vy[e] = rd.readDouble(tok[1]);
    }
  }
}

// Little-endian reading with a bounds check against the block length (when known).
class BlockReader {
 public:
  BlockReader(const char* b, int64_t len, std::string w) : block(b), blockLen(len), where(std::move(w)) {}
  void need(int64_t bytes, const std::string& what) const {
    if (blockLen >= 0 && pos + bytes > blockLen)
      throw VException("readMeshBuffer: " + where + " ends after " + std::to_string(blockLen) +
                       " bytes, before its " + what + " (needs " + std::to_string(pos + bytes) + " bytes).");
  }
  uint32_t u32() {
    const auto* p = reinterpret_cast<const unsigned char*>(block + pos);
    pos += 4;
    return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 |
           static_cast<uint32_t>(p[2]) << 16 | static_cast<uint32_t>(p[3]) << 24;
  }
  int32_t i32() { return static_cast<int32_t>(u32()); }
  double f32() { return static_cast<double>(std::bit_cast<float>(u32())); }

 private:
  const char* block;
  int64_t blockLen;
  int64_t pos = 0;
  std::string where;
};

void parseMeshBuffer(const char* block, uint32_t version, int64_t blockLen, const std::string& where,
                     MeshArrays& a) {
  if (block == nullptr) throw VException("readMeshBuffer: " + where + " is missing.");
  BlockReader rd(block, blockLen, where);
  rd.need(8, "counts of nodes and elements");
  a.non = rd.i32();
  a.noe = rd.i32();
  if (a.non < 0 || a.noe < 0)
    throw VException("readMeshBuffer: " + where + " announces " + std::to_string(a.non) + " nodes and " +
                     std::to_string(a.noe) + " elements; neither may be negative.");
  rd.need(12 * static_cast<int64_t>(a.non) + 4 * static_cast<int64_t>(a.noe), "node and element arrays");
  a.x.resize(a.non);
  a.y.resize(a.non);
  a.nt.resize(a.non);
  for (int32_t i = 0; i < a.non; i++) a.x[i] = rd.f32();
  for (int32_t i = 0; i < a.non; i++) a.y[i] = rd.f32();
  for (int32_t i = 0; i < a.non; i++) a.nt[i] = rd.i32();
  // Compared unsigned: a stand-alone file (-1) keeps its types as stored.
  if (version < 2)
    for (int32_t i = 0; i < a.non; i++) {
      // The lowest int32 has no predecessor: refuse it rather than wrap.
      if (a.nt[i] == INT32_MIN)
        throw VException("readMeshBuffer: " + where + " gives node " + std::to_string(i) + " the type " +
                         std::to_string(a.nt[i]) + ", which has no shifted value.");
      a.nt[i] = a.nt[i] == 0 ? 99 : a.nt[i] - 1;
    }
  a.nonpe.resize(a.noe);
  int64_t S = 0;
  for (int32_t e = 0; e < a.noe; e++) {
    a.nonpe[e] = rd.i32();
    if (a.nonpe[e] < 0 || a.nonpe[e] > maxNodesPerElem)
      throw VException("readMeshBuffer: " + where + " gives element " + std::to_string(e) + " " +
                       std::to_string(a.nonpe[e]) + " nodes; an element has 0 to " +
                       std::to_string(maxNodesPerElem) + ".");
    S += a.nonpe[e];
  }
  rd.need(4 * S, "element node list");
  a.en.resize(S);
  for (int64_t k = 0; k < S; k++) a.en[k] = rd.i32();
  // Compared signed: -1 has no Voronoi arrays.
  a.hasVoronoi = static_cast<int32_t>(version) >= 7;
  if (a.hasVoronoi) {
    rd.need(8 * static_cast<int64_t>(a.noe), "Voronoi points");
    a.vx.resize(a.noe);
    a.vy.resize(a.noe);
    for (int32_t e = 0; e < a.noe; e++) a.vx[e] = rd.f32();
    for (int32_t e = 0; e < a.noe; e++) a.vy[e] = rd.f32();
  }
}

void putU32(char*& p, uint32_t v) {
  for (int i = 0; i < 4; i++) *p++ = static_cast<char>((v >> (8 * i)) & 0xFF);
}
void putI32(char*& p, int32_t v) { putU32(p, static_cast<uint32_t>(v)); }
void putF32(char*& p, double v) { putU32(p, std::bit_cast<uint32_t>(static_cast<float>(v))); }

std::string fileFmtText(int32_t fmt) {
  switch (fmt) {
    case 0: return "EMT";
    case 1: return "EMB";
    case 2: return "TEXT0D";
    case 3: return "TEXT1D";
    case 4: return "EMF";
    case 10: return "NC";
    case 100: return "RESTART";
    case 101: return "DECOUPLED";
    case 1000: return "MESH";
    default: throw VException("fileFmtEnum2str: unsupported fileFmtEnum");
  }
}

}  // namespace

int32_t thMesh2D::readMeshFromFile(std::string fileName) {
  if (&fileName != &meshFN) meshFN = fileName;
  // A directory opens for reading here but is no file (nor is it on the platform of origin).
  if (!VCppLib::fileExists(fileName)) throw VException("No such file: " + fileName);
  MeshArrays a;
  if (meshFmt == 0) {
    parseMeshText(VCppLib::readFileToString(fileName), "mesh file " + fileName, a);
  } else if (meshFmt == 1) {
    // Read in binary mode and to its real end: the bytes as they are, whatever size is reported.
    const std::string block = VCppLib::readFileToString(fileName);
    parseMeshBuffer(block.c_str(), static_cast<uint32_t>(-1), static_cast<int64_t>(block.size()),
                    "mesh file " + fileName, a);
  } else {
    throw VException("readMeshFromFile: unsupported fileformat.");
  }
  install(*this, a);
  return initMesh();
}

int32_t thMesh2D::readMeshText(std::string content) {
  MeshArrays a;
  parseMeshText(content, "the mesh text", a);
  install(*this, a);
  return initMesh();
}

int32_t thMesh2D::readMeshBuffer(const char* block, uint32_t version, int64_t blockLen) {
  MeshArrays a;
  parseMeshBuffer(block, version, blockLen, "the mesh block", a);
  install(*this, a);
  return initMesh();
}

int32_t thMesh2D::writeMeshBuffer(char*& block) {
  if ((non > 0 && (nxCoor == nullptr || nyCoor == nullptr || nt == nullptr)) ||
      (noe > 0 && (nonpe == nullptr || en == nullptr)))
    throw VException("writeMeshBuffer: the mesh has counts but not the arrays of its nodes and elements.");
  int64_t S = 0;
  for (int32_t e = 0; e < noe; e++) S += nonpe[e];
  if (noe > 0 && (eVoronoiX == nullptr || eVoronoiY == nullptr))
    throw VException("writeMeshBuffer: the mesh has no Voronoi points yet; initMesh must run first.");
  const int64_t len = 8 + 4 * (3 * static_cast<int64_t>(non) + 3 * static_cast<int64_t>(noe) + S);
  if (len > INT32_MAX) throw VException("writeMeshBuffer: the mesh is too large for one mesh block.");
  block = new char[len];
  char* p = block;
  putI32(p, non);
  putI32(p, noe);
  for (int32_t i = 0; i < non; i++) putF32(p, nxCoor[i]);
  for (int32_t i = 0; i < non; i++) putF32(p, nyCoor[i]);
  for (int32_t i = 0; i < non; i++) putI32(p, nt[i]);
  for (int32_t e = 0; e < noe; e++) putI32(p, nonpe[e]);
  for (int64_t k = 0; k < S; k++) putI32(p, en[k]);
  for (int32_t e = 0; e < noe; e++) putF32(p, eVoronoiX[e]);
  for (int32_t e = 0; e < noe; e++) putF32(p, eVoronoiY[e]);
  return static_cast<int32_t>(len);
}

std::string thMesh2D::meshXml() {
  const std::string& nl = VCppLib::newline;
  std::string content = VCppLib::xmlWrap(meshFN, "Filename", false) + nl +
                        VCppLib::xmlWrap(fileFmtText(meshFmt), "Format", false) + nl +
                        VCppLib::xmlWrap(projection, "Projection", false) + nl;
  return VCppLib::xmlWrap(content, "Mesh", true);
}

int32_t thMesh2D::initDefaultMesh() { return readMeshText(defaultMeshText); }

}  // namespace thalmod
