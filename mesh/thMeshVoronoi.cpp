// Voronoi points, the orthogonality test and the metric of every face.
#include <cmath>
#include <cstdint>
#include <vector>

#include "mesh/thMesh2D.h"
#include "mesh/thMeshUtil.h"
#include "support/VGeom.h"
#include "support/thBigArrays.h"

namespace thalmod {

using VCppLib::VException;

void thMesh2D::initVoronoi() {
  eIsAcute = bigarr::newArr<bool>(noe);
  isOrthogonal = true;

  // Points announced but never filled (a short mesh file) are computed like missing ones.
  if (hasVoronoi && eVoronoiX != nullptr && eVoronoiY != nullptr) {
    calcAnglesVF();
    for (int32_t e = 0; e < noe; e++) {
      eIsAcute[e] = true;
      for (int32_t i = 0; i < nivfpe[e]; i++) {
        if (anglesVF[evf[eni[e] + i]] > 5.0) {
          eIsAcute[e] = false;
          isOrthogonal = false;
          break;
        }
      }
    }
    return;
  }

  shares.release(eVoronoiX);
  shares.release(eVoronoiY);
  eVoronoiX = bigarr::newArr<double>(noe);
  eVoronoiY = bigarr::newArr<double>(noe);
  const double rightAngle = std::atan(1.0) * 4.0 * 0.5;
  for (int32_t e = 0; e < noe; e++) {
    if (nonpe[e] != 3) {
      eIsAcute[e] = false;
      eVoronoiX[e] = exCoor[e];
      eVoronoiY[e] = eyCoor[e];
      continue;
    }
    const int32_t* nd = en + eni[e];
    double x[3], y[3];
    for (int32_t i = 0; i < 3; i++) {
      x[i] = nxCoor[nd[i]];
      y[i] = nyCoor[nd[i]];
    }
    VCppLib::circumcentre(x[0], y[0], x[1], y[1], x[2], y[2], eVoronoiX[e], eVoronoiY[e]);
    eIsAcute[e] = true;
    for (int32_t i = 0; i < 3; i++) {
      const int32_t next = (i + 1) % 3, prev = (i + 2) % 3;
      const double ax = x[i] - x[next], ay = y[i] - y[next];
      const double bx = x[i] - x[prev], by = y[i] - y[prev];
      // Unclamped on purpose: a cosine just beyond 1 gives NaN, and NaN passes the test.
      const double angle =
          std::acos((ax * bx + ay * by) / (std::sqrt(ax * ax + ay * ay) * std::sqrt(bx * bx + by * by)));
      if (angle >= rightAngle) {
        eVoronoiX[e] = exCoor[e];
        eVoronoiY[e] = eyCoor[e];
        eIsAcute[e] = false;
        isOrthogonal = false;
        break;
      }
    }
  }
  calcAnglesVF();
  hasVoronoi = true;
}

void thMesh2D::calcAnglesVF() {
  // A copy that shares anglesVF gets its own, so that the others keep the angles of their points.
  if (anglesVF == nullptr || anglesVFCap < nivf || shares.isShared(anglesVF)) {
    shares.release(anglesVF);
    anglesVF = bigarr::newArr<double>(nivf > 0 ? nivf : 0);
    anglesVFCap = nivf;
  }
  for (int32_t f = 0; f < nivf; f++) {
    const int32_t a = vfn[2 * f], b = vfn[2 * f + 1];
    const int32_t e0 = vfe[2 * f], e1 = vfe[2 * f + 1];
    const double nx = nxCoor[a] - nxCoor[b], ny = nyCoor[a] - nyCoor[b];
    const double vx = eVoronoiX[e0] - eVoronoiX[e1], vy = eVoronoiY[e0] - eVoronoiY[e1];
    // Unclamped: rounding beyond 1 gives NaN, which never exceeds the 5 degree limit.
    const double angle =
        std::acos((vx * nx + vy * ny) / (std::sqrt(vx * vx + vy * vy) * std::sqrt(nx * nx + ny * ny)));
    anglesVF[f] = std::fabs(90.0 - angle * VCppLib::rad2deg);
  }
}

void thMesh2D::initFaceGeometry() {
  vfdx = bigarr::newArr<double>(nvf);
  vfdy = bigarr::newArr<double>(nvf);
  vfl = bigarr::newArr<double>(nvf);
  vfxCoor = bigarr::newArr<double>(nvf);
  vfyCoor = bigarr::newArr<double>(nvf);
  vfxNormL = bigarr::newArr<double>(nvf);
  vfyNormL = bigarr::newArr<double>(nvf);
  for (int32_t f = 0; f < nvf; f++) {
    const int32_t a = vfn[2 * f], b = vfn[2 * f + 1], e0 = vfe[2 * f];
    const double ax = nxCoor[a], ay = nyCoor[a], bx = nxCoor[b], by = nyCoor[b];
    vfxCoor[f] = (ax + bx) * 0.5;
    vfyCoor[f] = (ay + by) * 0.5;
    const double vx = eVoronoiX[e0], vy = eVoronoiY[e0];
    double px, py;
    if (f < nivf) {
      px = eVoronoiX[vfe[2 * f + 1]];
      py = eVoronoiY[vfe[2 * f + 1]];
    } else {
      // foot of the perpendicular from the Voronoi point on the face's line
      const double dx = bx - ax, dy = by - ay;
      const double t = ((vx - ax) * dx + (vy - ay) * dy) / (dx * dx + dy * dy);
      px = ax + t * dx;
      py = ay + t * dy;
    }
    if (isLonLat) {
      // A zone of the face's own, so that the face's metric is taken where it lies.
      const int32_t z = meshutil::utmZoneOf(vfxCoor[f], vfyCoor[f]);
      double axm, aym, bxm, bym, vxm, vym, pxm, pym;
      VCppLib::latLon2UTM(ax, ay, z, axm, aym);
      VCppLib::latLon2UTM(bx, by, z, bxm, bym);
      VCppLib::latLon2UTM(vx, vy, z, vxm, vym);
      VCppLib::latLon2UTM(px, py, z, pxm, pym);
      vfdx[f] = bxm - axm;
      vfdy[f] = bym - aym;
      vfl[f] = std::sqrt(vfdx[f] * vfdx[f] + vfdy[f] * vfdy[f]);
      const double nx = pxm - vxm, ny = pym - vym;
      const double len = std::sqrt(nx * nx + ny * ny);
      vfxNormL[f] = nx / len;
      vfyNormL[f] = ny / len;
    } else {
      const double nx = px - vx, ny = py - vy;
      if (nx == 0.0 && ny == 0.0) throw VException("Voronoi point on face." + thGlobal::errTail);
      const double len = std::sqrt(nx * nx + ny * ny);
      vfxNormL[f] = nx / len;
      vfyNormL[f] = ny / len;
      vfdx[f] = bx - ax;
      vfdy[f] = by - ay;
      vfl[f] = std::sqrt(vfdx[f] * vfdx[f] + vfdy[f] * vfdy[f]);
    }
  }
}

void thMesh2D::initFaceDistances() {
  vfDist = bigarr::newArr<double>(nvf);
  vfDistInv = bigarr::newArr<double>(nvf);
  vfDistX = bigarr::newArr<double>(nvf);
  vfDistY = bigarr::newArr<double>(nvf);
  vfeDist = bigarr::newArr<double>(2 * static_cast<int64_t>(nvf));
  evfDist = bigarr::newArr<double>(nevf);

  // Voronoi points in metres, in the one zone of the mesh
  const double* vxm = eVoronoiX;
  const double* vym = eVoronoiY;
  std::vector<double> bufX, bufY;
  if (isLonLat) {
    bufX.resize(noe);
    bufY.resize(noe);
    for (int32_t e = 0; e < noe; e++)
      VCppLib::latLon2UTM(eVoronoiX[e], eVoronoiY[e], utmZone, bufX[e], bufY[e]);
    vxm = bufX.data();
    vym = bufY.data();
  }
  const double* X = nxUTM;
  const double* Y = nyUTM;

  for (int32_t f = 0; f < nivf; f++) {
    const int32_t a = vfn[2 * f], b = vfn[2 * f + 1];
    const double x0 = vxm[vfe[2 * f]], y0 = vym[vfe[2 * f]];
    const double x1 = vxm[vfe[2 * f + 1]], y1 = vym[vfe[2 * f + 1]];
    vfDist[f] = std::sqrt((x0 - x1) * (x0 - x1) + (y0 - y1) * (y0 - y1));
    vfDistInv[f] = 1.0 / vfDist[f];
    vfDistX[f] = std::fabs(x0 - x1);
    vfDistY[f] = std::fabs(y0 - y1);
    const double dx = X[b] - X[a], dy = Y[b] - Y[a];
    const double cross = (x0 - X[a]) * dy - (y0 - Y[a]) * dx;
    vfeDist[2 * f] = std::sqrt(cross * cross / (dx * dx + dy * dy));
    vfeDist[2 * f + 1] = vfDist[f] - vfeDist[2 * f];
  }
  for (int32_t f = nivf; f < nvf; f++) {
    const int32_t a = vfn[2 * f], b = vfn[2 * f + 1];
    const int32_t e = vfe[2 * f] >= 0 ? vfe[2 * f] : vfe[2 * f + 1];
    const double vx = vxm[e], vy = vym[e];
    const double dx = X[b] - X[a], dy = Y[b] - Y[a];
    const double t = ((vx - X[a]) * dx + (vy - Y[a]) * dy) / (dx * dx + dy * dy);
    const double ox = vx - (X[a] + t * dx), oy = vy - (Y[a] + t * dy);
    const double o = std::sqrt(ox * ox + oy * oy);
    vfeDist[2 * f] = o;
    vfDist[f] = 2.0 * o;
    vfDistInv[f] = 1.0 / vfDist[f];
    vfeDist[2 * f + 1] = vfDist[f] - o;
    vfDistX[f] = 2.0 * std::fabs(ox);
    vfDistY[f] = 2.0 * std::fabs(oy);
  }
  for (int32_t e = 0; e < noe; e++) {
    for (int32_t i = 0; i < nonpe[e]; i++) {
      const int32_t k = eni[e] + i, f = evf[k];
      evfDist[k] = vfe[2 * f] == e ? vfeDist[2 * f] : vfeDist[2 * f + 1];
    }
  }
}

}  // namespace thalmod
