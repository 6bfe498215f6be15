// Mesh optimisation: removing inner nodes of four triangles, and three ways of moving nodes.
//
// Each starts from nodeInfo: per node its neighbour count, and at the node's offset (the sum of
// the counts before it) its neighbours and, in parallel, its elements (-1 where a boundary face
// has none on the node's side), with a flag telling whether all its elements are triangles.
#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "mesh/thMesh2D.h"
#include "support/VGeom.h"
#include "support/VStr.h"
#include "support/thBigArrays.h"

namespace thalmod {

using VCppLib::VException;

namespace {

struct NodeInfo {
  std::unique_ptr<int32_t[]> count, nbrs, elems;
  std::unique_ptr<bool[]> allTri;
  bigarr::vector<int64_t> offset;  // [node] first entry in nbrs, elems; offset[non] is their length

  explicit NodeInfo(const thMesh2D& m) {
    int32_t *c = nullptr, *n = nullptr, *e = nullptr;
    bool* t = nullptr;
    m.nodeInfo(c, n, e, t);
    count.reset(c);
    nbrs.reset(n);
    elems.reset(e);
    allTri.reset(t);
    offset.assign(static_cast<size_t>(m.non > 0 ? m.non : 0) + 1, 0);
    for (int32_t i = 0; i < m.non; i++) offset[i + 1] = offset[i] + count[i];
  }
};

// A mover may move the node: inner, with neighbours, and with triOnly only among triangles.
bool movable(const thMesh2D& m, const NodeInfo& ni, int32_t i, bool triOnly) {
  return m.nt[i] == 0 && ni.count[i] > 0 && (!triOnly || ni.allTri[i]);
}

}  // namespace

int32_t thMesh2D::optimRemNodesWith4TriElems() {
  NodeInfo ni(*this);
  std::vector<char> elemListed(noe > 0 ? noe : 0, 0);
  std::vector<int32_t> delElems, delNodes, tris;
  for (int32_t n = 0; n < non; n++) {
    if (ni.count[n] != 4 || !ni.allTri[n]) continue;
    const int32_t* el = ni.elems.get() + ni.offset[n];
    const int32_t* nb = ni.nbrs.get() + ni.offset[n];
    // Four distinct triangles (as at every inner node of four faces; at a boundary node a slot
    // repeats an element or names none), none of them taken by a node replaced before: two
    // neighbouring nodes of four triangles share two, which could not be replaced twice.
    bool ok = true;
    for (int32_t i = 0; i < 4 && ok; i++) {
      ok = el[i] >= 0 && !elemListed[el[i]];
      for (int32_t j = 0; j < i && ok; j++) ok = el[j] != el[i];
    }
    if (!ok) continue;
    for (int32_t i = 0; i < 4; i++) {
      elemListed[el[i]] = 1;
      delElems.push_back(el[i]);
    }
    delNodes.push_back(n);
    // The neighbours clockwise around their mean, from the positive x axis.
    double x[4], y[4];
    for (int32_t i = 0; i < 4; i++) {
      x[i] = nxCoor[nb[i]];
      y[i] = nyCoor[nb[i]];
    }
    const double mx = (x[0] + x[1] + x[2] + x[3]) * 0.25, my = (y[0] + y[1] + y[2] + y[3]) * 0.25;
    std::unique_ptr<int32_t[]> order(VCppLib::sortAroundPoint(x, y, 4, mx, my, 0.0, true));
    const int32_t q0 = nb[order[0]], q1 = nb[order[1]], q2 = nb[order[2]], q3 = nb[order[3]];
    // The diagonal joins the pair of the larger neighbour count sum; a tie takes q1-q3.
    if (ni.count[q0] + ni.count[q2] <= ni.count[q1] + ni.count[q3])
      tris.insert(tris.end(), {q1, q2, q3, q3, q0, q1});
    else
      tris.insert(tris.end(), {q0, q1, q2, q2, q3, q0});
  }
  if (delNodes.empty()) return 0;
  // The new triangles go to the end of the element list, so that the listed numbers stay valid.
  // They are appended as single additions are, each with its own node mean as Voronoi point, and
  // without an initMesh of its own: through the bulk addition every new triangle would get one
  // and the same point, and the two triangles of a removed node, which share their diagonal, make
  // initMesh fail with "Voronoi point on face.".
  const int32_t nNew = static_cast<int32_t>(tris.size() / 3);
  const std::vector<int32_t> three(nNew, 3);
  editAddElems(nNew, tris.data(), three.data(), false);
  editDelNodesElems(static_cast<int32_t>(delElems.size()), delElems.data(),
                    static_cast<int32_t>(delNodes.size()), delNodes.data());
  return static_cast<int32_t>(delNodes.size());
}

int32_t thMesh2D::optimCenterNodes(int32_t nIterations, bool triOnly) {
  if (nIterations < 1) return 0;
  NodeInfo ni(*this);
  bigarr::vector<double> newX(non), newY(non);  // side arrays, one allocation per call
  bigarr::vector<char> moves(non);
  for (int32_t i = 0; i < non; i++) moves[i] = movable(*this, ni, i, triOnly);
  for (int32_t it = 0; it < nIterations; it++) {
    // Each sweep walks the neighbour list from its start (a running offset carried over from
    // the sweep before would read past the list's end).
    for (int32_t i = 0; i < non; i++) {
      if (!moves[i]) continue;
      double sx = 0, sy = 0;
      for (int64_t k = ni.offset[i]; k < ni.offset[i + 1]; k++) {
        sx += nxCoor[ni.nbrs[k]];
        sy += nyCoor[ni.nbrs[k]];
      }
      newX[i] = sx / ni.count[i];
      newY[i] = sy / ni.count[i];
    }
    // All at once: within a sweep every node sees its neighbours' old positions.
    for (int32_t i = 0; i < non; i++) {
      if (!moves[i]) continue;
      nxCoor[i] = newX[i];
      nyCoor[i] = newY[i];
    }
  }
  return 0;
}

int32_t thMesh2D::optimMoveNodesTowardLargeElems(double factor, bool triOnly) {
  NodeInfo ni(*this);
  bigarr::vector<double> area(non, 0.0);
  for (int32_t i = 0; i < non; i++)
    for (int64_t k = ni.offset[i]; k < ni.offset[i + 1]; k++)
      if (ni.elems[k] >= 0) area[i] += eArea[ni.elems[k]];
  double largest = -1e37, smallest = 1e37;
  for (int32_t i = 0; i < non; i++) {
    if (ni.count[i] < 1 || (triOnly && !ni.allTri[i])) continue;
    largest = std::fmax(largest, area[i]);
    smallest = std::fmin(smallest, area[i]);
  }
  const double range = largest - smallest;
  // Nodes of equal area sums have nothing to move toward (and the weight would divide by 0).
  if (!(range > 0) || !std::isfinite(range)) return 0;
  for (int32_t i = 0; i < non; i++) {
    if (!movable(*this, ni, i, triOnly)) continue;
    int32_t best = -1;
    double bestArea = 0.0;  // only a neighbour of a positive area sum can win
    for (int64_t k = ni.offset[i]; k < ni.offset[i + 1]; k++) {
      const int32_t q = ni.nbrs[k];
      if (area[q] > bestArea) {
        bestArea = area[q];
        best = q;
      }
    }
    if (best < 0) continue;
    const double w = (area[best] - area[i]) * factor / range;
    // Stored at once: later nodes see this node's new position; area stays as computed.
    nxCoor[i] = (1 - w) * nxCoor[i] + w * nxCoor[best];
    nyCoor[i] = (1 - w) * nyCoor[i] + w * nyCoor[best];
  }
  return 0;
}

int32_t thMesh2D::optimDrawNodesTowardNode(int32_t n, double r, double p, double f, bool triOnly) {
  if (n < 0 || n >= non)
    throw VException(
        "optimDrawNodesTowardNode: node " + VCppLib::VStr::toString(n) + " does not exist; " +
        (non > 0 ? "the mesh has nodes 0 to " + VCppLib::VStr::toString(non - 1) : "the mesh has no nodes") +
        ".");
  NodeInfo ni(*this);
  if (r < 0) {
    double x0 = nxCoor[0], x1 = nxCoor[0], y0 = nyCoor[0], y1 = nyCoor[0];
    for (int32_t i = 1; i < non; i++) {
      x0 = std::fmin(x0, nxCoor[i]);
      x1 = std::fmax(x1, nxCoor[i]);
      y0 = std::fmin(y0, nyCoor[i]);
      y1 = std::fmax(y1, nyCoor[i]);
    }
    r = ((y1 - y0) + (x1 - x0)) / 20.0;
  }
  const double s = std::pow(r, p);
  const double cx = nxCoor[n], cy = nyCoor[n];
  for (int32_t i = 0; i < non; i++) {
    if (i == n || nt[i] != 0 || (triOnly && !ni.allTri[i])) continue;
    const double d = std::hypot(nxCoor[i] - cx, nyCoor[i] - cy);
    if (!(r > d)) continue;
    const double w = std::pow(r - d, p) * f / s;
    nxCoor[i] = (1 - w) * nxCoor[i] + w * cx;
    nyCoor[i] = (1 - w) * nyCoor[i] + w * cy;
  }
  return 0;
}

}  // namespace thalmod
