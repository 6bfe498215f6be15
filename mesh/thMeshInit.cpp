// initMesh, which derives from the primary arrays the element centres and areas, then the faces
// (mesh/thMeshFaces.cpp), Voronoi points and face metrics (mesh/thMeshVoronoi.cpp) and the open
// boundaries; and the element neighbour lists, built on demand.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "mesh/thMesh2D.h"
#include "mesh/thMeshUtil.h"
#include "support/VGeom.h"
#include "support/VStr.h"
#include "support/thBigArrays.h"

namespace thalmod {

using VCppLib::VException;

namespace {

// Going on with such input would read or write outside the arrays: stop with a clear sentence.
void checkPrimaryArrays(const thMesh2D& m) {
  if (m.non < 0 || m.noe < 0)
    throw VException("initMesh: the mesh has " + std::to_string(m.non) + " nodes and " +
                     std::to_string(m.noe) + " elements; neither count may be negative.");
  if (m.non > 0 && (m.nxCoor == nullptr || m.nyCoor == nullptr || m.nt == nullptr))
    throw VException("initMesh: the node arrays of a mesh of " + std::to_string(m.non) +
                     " nodes are missing.");
  if (m.noe > 0 && (m.nonpe == nullptr || m.en == nullptr))
    throw VException("initMesh: the element arrays of a mesh of " + std::to_string(m.noe) +
                     " elements are missing.");
  int64_t entries = 0;
  for (int32_t e = 0; e < m.noe; e++) {
    if (m.nonpe[e] < 0 || m.nonpe[e] > maxNodesPerElem)
      throw VException("initMesh: element " + std::to_string(e) + " has " + std::to_string(m.nonpe[e]) +
                       " nodes; an element has 0 to " + std::to_string(maxNodesPerElem) + " nodes.");
    entries += m.nonpe[e];
  }
  if (entries > INT32_MAX) throw VException("initMesh: the elements have more than 2^31 nodes in all.");
  int64_t k = 0;
  for (int32_t e = 0; e < m.noe; e++) {
    for (int32_t i = 0; i < m.nonpe[e]; i++, k++) {
      if (m.en[k] < 0 || m.en[k] >= m.non)
        throw VException("initMesh: element " + std::to_string(e) + " refers to node " +
                         std::to_string(m.en[k]) + ", but the mesh has " + std::to_string(m.non) + " nodes.");
    }
  }
}

// eni by running sum over nonpe, and nevf.
void numberEntries(thMesh2D& m) {
  m.eni = bigarr::newArr<int32_t>(m.noe);
  int32_t run = 0;
  for (int32_t e = 0; e < m.noe; e++) {
    m.eni[e] = run;
    run += m.nonpe[e];
  }
  m.nevf = run;
}

// isLonLat, the node means and the node coordinates in metres (nxUTM, nyUTM), which are the
// very arrays nxCoor, nyCoor unless the mesh is in degrees.
void nodesInMetres(thMesh2D& m) {
  m.isLonLat = VCppLib::VStr::toUpper(m.projection).find("LONLAT") != std::string::npos;
  double sx = 0, sy = 0;
  for (int32_t i = 0; i < m.non; i++) {
    sx += m.nxCoor[i];
    sy += m.nyCoor[i];
  }
  m.xMean = sx / m.non;
  m.yMean = sy / m.non;
  if (m.isLonLat) {
    m.utmZone = meshutil::utmZoneOf(m.xMean, m.yMean);
    m.nxUTM = bigarr::newArr<double>(m.non);
    m.nyUTM = bigarr::newArr<double>(m.non);
    for (int32_t i = 0; i < m.non; i++)
      VCppLib::latLon2UTM(m.nxCoor[i], m.nyCoor[i], m.utmZone, m.nxUTM[i], m.nyUTM[i]);
  } else {
    m.nxUTM = m.nxCoor;
    m.nyUTM = m.nyCoor;
    m.utmZone = 32;
  }
}

// A mesh without elements has no faces, and empty Voronoi arrays that count as given.
void noElements(thMesh2D& m) {
  m.nivf = m.nvf = m.nevf = m.tnbe = m.nBnd = 0;
  m.vft = new int32_t[0];
  m.vfn = new int32_t[0];
  m.shares.release(m.eVoronoiX);
  m.shares.release(m.eVoronoiY);
  m.eVoronoiX = new double[0];
  m.eVoronoiY = new double[0];
  m.hasVoronoi = true;
}

// Node coordinates of each element entry, element centres (in mesh coordinates), areas (in
// metres), their sum, the area weighted centre and the mean element size.
void elementCentresAndAreas(thMesh2D& m) {
  m.enxCoor = bigarr::newArr<double>(m.nevf);
  m.enyCoor = bigarr::newArr<double>(m.nevf);
  double areaSum = 0;
  for (int32_t e = 0; e < m.noe; e++) {
    const int32_t n = m.nonpe[e], k0 = m.eni[e];
    double cx = 0, cy = 0;
    double ux[maxNodesPerElem], uy[maxNodesPerElem];
    for (int32_t i = 0; i < n; i++) {
      const int32_t node = m.en[k0 + i];
      m.enxCoor[k0 + i] = m.nxCoor[node];
      m.enyCoor[k0 + i] = m.nyCoor[node];
      cx += m.nxCoor[node];
      cy += m.nyCoor[node];
      ux[i] = m.nxUTM[node];
      uy[i] = m.nyUTM[node];
    }
    m.exCoor[e] = cx / n;
    m.eyCoor[e] = cy / n;
    const double area = VCppLib::polygonArea(ux, uy, n);
    m.eArea[e] = area;
    m.eAreaInv[e] = 1.0 / area;
    m.totArea += area;
    areaSum += area;
    m.areaCenterX += m.exCoor[e] * area;
    m.areaCenterY += m.eyCoor[e] * area;
  }
  m.meanElemSize = std::sqrt(areaSum / m.noe);
  m.areaCenterX /= m.totArea;
  m.areaCenterY /= m.totArea;
}

}  // namespace

// Replaces the derived arrays: in a copy that shares them, only this copy lets go of them.
int32_t thMesh2D::initMesh() {
  checkPrimaryArrays(*this);
  freeDerivedArrays();
  // Not initialised until the run completes: a run that fails leaves the flag unset.
  *initFlag = 0;
  numberEntries(*this);
  nodesInMetres(*this);
  eArea = bigarr::newArr<double>(noe);
  eAreaInv = bigarr::newArr<double>(noe);
  exCoor = bigarr::newArr<double>(noe);
  eyCoor = bigarr::newArr<double>(noe);
  totArea = areaCenterX = areaCenterY = 0;
  if (noe < 1) {
    noElements(*this);
  } else {
    elementCentresAndAreas(*this);
    initFaces();
    initVoronoi();
    initFaceGeometry();
    initBoundaries();
    initFaceDistances();
  }
  *initFlag = 1;
  return 0;
}

void thMesh2D::initBoundaries() {
  if (tnbe < 1) return;
  bndElem = bigarr::newArr<int32_t>(tnbe);
  bndNoFaces = new int32_t[nBnd];
  bndId = new int32_t[nBnd];
  bndFirst = new int32_t[nBnd];
  int32_t last = 100, cur = -1;
  for (int32_t i = 0; i < tnbe; i++) {
    const int32_t f = nivf + i;
    bndElem[i] = vfe[2 * f];
    vfe[2 * f + 1] = noe + i;
    if (vft[f] != last) {
      cur++;
      bndNoFaces[cur] = 0;
      bndFirst[cur] = i;
      bndId[cur] = vft[f];
      last = vft[f];
    }
    bndNoFaces[cur]++;
  }
}

void thMesh2D::initElemNbrs() {
  // The elements of each face in ascending order; the neighbour across an inner face is the
  // first of them other than the element itself.
  std::vector<int32_t> first(static_cast<size_t>(nvf) + 1, 0);
  for (int32_t k = 0; k < nevf; k++) first[evf[k] + 1]++;
  for (int32_t f = 0; f < nvf; f++) first[f + 1] += first[f];
  std::vector<int32_t> fill(first.begin(), first.end() - 1), elems(nevf);
  for (int32_t e = 0; e < noe; e++)
    for (int32_t i = 0; i < nonpe[e]; i++) elems[fill[evf[eni[e] + i]]++] = e;

  std::vector<int32_t> no(noe, 0), nbr, nbrVf;
  for (int32_t e = 0; e < noe; e++) {
    for (int32_t i = 0; i < nivfpe[e]; i++) {
      const int32_t f = evf[eni[e] + i];
      int32_t other = -1;
      for (int32_t j = first[f]; j < first[f + 1]; j++) {
        if (elems[j] != e) {
          other = elems[j];
          break;
        }
      }
      if (other < 0) throw -1;
      nbr.push_back(other);
      nbrVf.push_back(f);
      no[e]++;
    }
  }

  shares.release(eNbrNo);
  shares.release(eNbrIdx);
  shares.release(eNbr);
  shares.release(eNbrVf);
  eNbrNo = new int32_t[noe];
  eNbrIdx = new int32_t[noe];
  eNbr = new int32_t[nbr.size()];
  eNbrVf = new int32_t[nbr.size()];
  for (int32_t e = 0; e < noe; e++) {
    eNbrNo[e] = no[e];
    eNbrIdx[e] = e == 0 ? 0 : eNbrIdx[e - 1] + eNbrNo[e - 1];
  }
  std::copy(nbr.begin(), nbr.end(), eNbr);
  std::copy(nbrVf.begin(), nbrVf.end(), eNbrVf);
}

}  // namespace thalmod