// initMesh on small meshes worked out by hand: faces, sides, element face lists, boundaries,
// node types, areas, Voronoi points, normals and distances. Member-wise copies and clones of a
// mesh share arrays: every order of rebuilding, editing and destroying them leaves each survivor
// whole (the address sanitizer build checks the frees).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "mesh/thMesh2D.h"
#include "support/VGeom.h"
#include "testutil/thMeshFixtures.h"
#include "testutil/thTestUtil.h"

using thalmod::thMesh2D;
using V = std::vector<int>;

using thTest::arr;
using thTest::near;

namespace {

// The exact right angle as the mesh measures it: the degree factor is the rounded 57.29578.
const double rightAngleResidue = std::fabs(90.0 - std::acos(0.0) * 57.29578);

// The strip of three unit squares, both ends open (thTest::stripMesh): faces 0, 1 inner, 2 right
// end (element 2), 3 left end (element 0), six closed faces.
void expectWholeStrip(const thMesh2D& m) {
  EXPECT_EQ(std::vector<int>({m.nvf, m.nivf, m.vfe[1], m.vfe[3], m.bndElem[0], m.bndElem[1], m.nt[7]}),
            std::vector<int>({10, 2, 1, 2, 2, 0, 1}));
  EXPECT_EQ(std::vector<double>({m.totArea, m.nxCoor[7], m.eVoronoiX[2]}), std::vector<double>({3, 3, 2.5}));
}

}  // namespace

TEST(MeshInit, Triangles) {
  thMesh2D m, r, k;
  m.readMeshText("3 1\n0 0 0\n4 0 0\n1 3 0\n0 1 2\n");
  // Face counts, types, sides, node types and the sum of the distances to a face follow rules
  // that the random meshes of MeshTopology check; here the numbering and the geometry by hand.
  EXPECT_EQ(arr(m.vfn, 6), V({0, 1, 1, 2, 2, 0}));  // closed faces keep the element's node order
  EXPECT_EQ(arr(m.evf, 3), V({2, 1, 0}));           // three equal keys: the quicksort swaps the outer two
  // area, centre, and the circumcentre: x = 2 on the bisector of the base, 4 + y^2 = 1 + (y-3)^2
  EXPECT_TRUE(near({m.eArea[0], m.eAreaInv[0], m.exCoor[0], m.eyCoor[0], m.totArea, m.meanElemSize,
                    m.eVoronoiX[0], m.eVoronoiY[0]},
                   {6, 1.0 / 6, 5.0 / 3, 1, 6, std::sqrt(6.0), 2, 1}));
  // nxUTM is the very array nxCoor, not a copy
  EXPECT_TRUE(m.eIsAcute[0] && m.isOrthogonal && m.hasVoronoi && *m.initFlag != 0 && m.nxUTM == m.nxCoor);
  // faces (0,0)-(4,0), (4,0)-(1,3), (1,3)-(0,0); the feet of the perpendiculars from (2,1) are
  // (2,0), (2.5,1.5), (0.5,1.5): offsets (0,1), (-0.5,-0.5), (1.5,-0.5), mirrored by the ghost side
  const double r5 = std::sqrt(0.5), r25 = std::sqrt(2.5);
  EXPECT_TRUE(near(arr(m.vfxNormL, 3), {0, r5, -1.5 / r25}));
  EXPECT_TRUE(near(arr(m.vfyNormL, 3), {-1, r5, 0.5 / r25}));
  EXPECT_TRUE(near(arr(m.vfdx, 3), {4, -3, -1}));
  EXPECT_TRUE(near(arr(m.vfyCoor, 3), {0, 1.5, 1.5}));
  EXPECT_TRUE(near(arr(m.vfeDist, 6), {1, 1, r5, r5, r25, r25}));
  EXPECT_TRUE(near(arr(m.vfDistX, 3), {0, 1, 3}));
  EXPECT_TRUE(near(arr(m.vfDistY, 3), {2, 1, 1}));
  EXPECT_TRUE(near(arr(m.evfDist, 3), {r25, r5, 1}));  // evf is [2, 1, 0]

  // right-angled: the centre instead of the circumcentre. Node 3 is in no element (0 becomes
  // 99), node 4 keeps its 5.
  r.readMeshText("5 1\n0 0 0\n4 0 0\n0 3 0\n9 9 0\n8 8 5\n0 1 2\n");
  EXPECT_TRUE(near({r.eVoronoiX[0], r.eVoronoiY[0], r.xMean, r.yMean}, {4.0 / 3, 1, 21.0 / 5, 20.0 / 5}));
  EXPECT_FALSE(r.eIsAcute[0] || r.isOrthogonal);
  EXPECT_EQ(arr(r.nt + 3, 2), V({99, 5}));

  // the kite of two triangles: element 0 above the x axis, element 1 below it; circumcentres
  // (2, 5/6) and (2, -5/6)
  k.readMeshText("4 2\n0 0\n4 0\n2 3\n2 -3\n0 1 2\n0 3 1\n");
  EXPECT_EQ(arr(k.vfn, 10), V({1, 0, 1, 2, 2, 0, 0, 3, 3, 1}));  // inner face against element 0: 1 -> 0
  EXPECT_EQ(arr(k.evf, 6), V({0, 2, 1, 0, 4, 3}));
  EXPECT_EQ(arr(k.evfSign, 4), std::vector<int8_t>({1, 0, 0, -1}));
  // inner face 0: normal (0,-1) from element 0 to 1, Voronoi points 5/3 apart and 5/6 from it
  EXPECT_TRUE(near({k.vfxNormL[0], k.vfyNormL[0], k.vfDist[0], k.vfeDist[0], k.vfeDist[1], k.vfDistX[0],
                    k.vfDistY[0], k.anglesVF[0]},
                   {0, -1, 5.0 / 3, 5.0 / 6, 5.0 / 6, 0, 5.0 / 3, rightAngleResidue}));
  EXPECT_TRUE(k.isOrthogonal &&
              near({k.totArea, k.areaCenterX, k.areaCenterY, k.meanElemSize}, {12, 2, 0, std::sqrt(6.0)}));

  // element 1's face list made to lack the shared face: the failure is the bare integer -1
  k.evf[3] = 4;
  int code = 0;
  try {
    k.initElemNbrs();
  } catch (int c) {
    code = c;
  }
  EXPECT_TRUE(code == -1 && k.eNbrNo == nullptr);
}

TEST(MeshInit, QuadrilateralsAndMixed) {
  thMesh2D m;
  m.readMeshText(thTest::gridMeshText(2, 2));
  // inner faces in order of discovery, {1,4}, {3,4}, {4,5}, {4,7}, then the closed ones
  EXPECT_EQ(arr(m.vfn, 24), V({4, 1, 3, 4, 4, 5, 7, 4, 0, 1, 3, 0, 1, 2, 2, 5, 7, 6, 6, 3, 5, 8, 8, 7}));
  EXPECT_EQ(arr(m.evf, 4), V({1, 0, 5, 4}));
  EXPECT_TRUE(near(arr(m.vfxNormL, 4), {1, 0, 0, 1}));  // from the lower to the higher element
  EXPECT_TRUE(near(arr(m.anglesVF, 4), std::vector<double>(4, rightAngleResidue)));
  EXPECT_TRUE(arr(m.eIsAcute, 4) == std::vector<bool>(4, false) && m.isOrthogonal);

  // the second run keeps the points, tests them by the 5 degree rule, reuses anglesVF
  double* anglesBefore = m.anglesVF;
  m.initMesh();
  EXPECT_TRUE(arr(m.eIsAcute, 4) == std::vector<bool>(4, true) && m.isOrthogonal &&
              m.anglesVF == anglesBefore);

  m.initElemNbrs();
  // element 0's inner faces in evf order: face 1 (to element 2), face 0 (to element 1)
  EXPECT_EQ(V({m.eNbrIdx[3], m.eNbr[0], m.eNbr[1], m.eNbrVf[0], m.eNbrVf[1]}), V({6, 2, 1, 1, 0}));

  // a square and a triangle
  m.readMeshText("5 2\n0 0\n1 0\n1 1\n0 1\n2 0.5\n0 1 2 3\n1 4 2\n");
  // the triangle's circumcentre: (x-1)^2 + 0.25 = (2-x)^2 gives x = 1.375; the square's centre
  EXPECT_TRUE(near({m.eVoronoiX[1], m.eVoronoiY[1], m.eVoronoiX[0]}, {1.375, 0.5, 0.5}));
  // the inner face; evfDist of the triangle is its own side
  EXPECT_TRUE(
      near({m.vfDist[0], m.vfeDist[0], m.vfeDist[1], m.evfDist[m.eni[1]]}, {0.875, 0.5, 0.375, 0.375}));
  EXPECT_TRUE(
      near({m.eArea[1], m.totArea, m.areaCenterX}, {0.5, 1.5, (0.5 * 1.0 + (4.0 / 3.0) * 0.5) / 1.5}));
}

TEST(MeshInit, OpenBoundaries) {
  thMesh2D m, r;
  // three unit quads in a row; top nodes 5, 6 on boundary 2, east node 3 on boundary 3, the
  // north-east corner 7 joins boundaries 2 and 3
  m.readMeshText(
      "8 3\n0 0 0\n1 0 0\n2 0 0\n3 0 3\n0 1 99\n1 1 2\n2 1 2\n3 1 -203\n"
      "0 1 5 4\n1 2 6 5\n2 3 7 6\n");
  EXPECT_EQ(arr(m.vft, 10), V({0, 0, 2, 2, 3, 99, 99, 99, 99, 99}));
  // boundary 2 starts at its free end with the domain on the left: 7 -> 6, then 6 -> 5
  EXPECT_EQ(arr(m.vfn, 20), V({5, 1, 6, 2, 6, 7, 5, 6, 7, 3, 0, 1, 5, 4, 4, 0, 1, 2, 2, 3}));
  EXPECT_EQ(V({m.bndId[0], m.bndId[1], m.bndNoFaces[0], m.bndNoFaces[1], m.bndFirst[1]}), V({2, 3, 2, 1, 2}));
  EXPECT_EQ(V({m.bndElem[0], m.bndElem[1], m.bndElem[2], m.nbvfpe[1], m.nbvfpe[2]}), V({2, 1, 2, 1, 2}));
  EXPECT_EQ(arr(m.nt, 8), V({99, 99, 99, 3, 99, 2, 2, 3}));  // open over closed, later over earlier
  // element 2: inner face, then open 2, open 3, closed
  EXPECT_EQ(arr(m.evf + 8, 4), V({1, 2, 4, 9}));
  EXPECT_EQ(arr(m.evfSign + 8, 4), std::vector<int8_t>({-1, 1, 1, 0}));
  // outward normals of the open faces; a ghost column mirrors its element
  EXPECT_TRUE(near({m.vfyNormL[2], m.vfxNormL[4], m.vfDist[4], m.vfDistX[4], m.vfDistY[4]}, {1, 1, 1, 1, 0}));

  // face types from node types: face {0,1} is face 0 whether open or closed; types that name
  // no boundary give closed faces
  const int types[][3] = {{2, -203, 2},     {-203, 3, 3},   {4, -203, 99}, {2, 3, 99},        {7, 7, 7},
                          {-203, -203, 99}, {150, 150, 99}, {-5, -5, 99},  {INT32_MIN, 0, 99}};
  for (const auto& t : types) {
    r.readMeshText("3 1\n0 0 " + std::to_string(t[0]) + "\n1 0 " + std::to_string(t[1]) +
                   "\n0 1 99\n0 1 2\n");
    EXPECT_EQ(r.vft[0], t[2]) << t[0] << " " << t[1];
  }

  // a ring of boundary 1: walked from node 0 of its first face, {0,1}, then {3,0}, {2,3}, {1,2},
  // each against the element and with an outward normal
  r.readMeshText("4 1\n0 0 1\n1 0 1\n1 1 1\n0 1 1\n0 1 2 3\n");
  EXPECT_EQ(V({r.tnbe, r.nBnd}), V({4, 1}));
  EXPECT_EQ(arr(r.vfn, 8), V({1, 0, 0, 3, 3, 2, 2, 1}));
  EXPECT_TRUE(near(arr(r.vfxNormL, 4), {0, -1, 0, 1}));
}

TEST(MeshInit, EmptyAndBrokenMeshesAndVoronoiPointsFromOutside) {
  thMesh2D m, n, b, c, v, l, r, k;
  EXPECT_TRUE(m.initMesh() == 0 && m.hasVoronoi && *m.initFlag != 0 && m.toString() == "0 0 0\n");
  n.readMeshText("2 0\n1 2 0\n3 4 7\n");  // nodes without elements: nothing below the element check runs
  EXPECT_TRUE(n.nvf == 0 && n.nt[0] == 0 && n.xMean == 2.0);

  // arrays that would be read out of bounds are refused; the mesh stays usable
  b.readMeshText("3 1\n0 0\n1 0\n0 1\n0 1 2\n");
  b.en[2] = -1;
  EXPECT_VEXCEPTION_HAS(b.initMesh(), "refers to node -1");
  b.en[2] = 2;
  b.nonpe[0] = 60;
  EXPECT_VEXCEPTION_HAS(b.initMesh(), "60 nodes");
  b.nonpe[0] = 3;
  EXPECT_EQ(b.initMesh(), 0);
  c.noe = -2;
  EXPECT_VEXCEPTION_HAS(c.initMesh(), "negative");
  c.noe = 2;
  EXPECT_VEXCEPTION_HAS(c.initMesh(), "missing");
  EXPECT_EQ(c.toString(), "0 2 2\n");  // counts without arrays: the header alone

  // element 0's Voronoi point from the file lies on its south face; in a lon/lat mesh the
  // normal becomes NaN instead
  const std::string text = "3 1 1\n0 0\n4 0\n1 3\n0 1 2\n2 0\n";
  EXPECT_VEXCEPTION(v.readMeshText(text), "Voronoi point on face." + thGlobal::errTail);
  l.projection = "LONLAT";
  EXPECT_EQ(l.readMeshText(text), 0);
  EXPECT_TRUE(std::isnan(l.vfxNormL[l.evf[2]]));
  // a later run on points moved onto a face fails as well and leaves the mesh uninitialised
  r.readMeshText("3 1\n0 0\n4 0\n1 3\n0 1 2\n");
  r.eVoronoiX[0] = 2;
  r.eVoronoiY[0] = 0;
  EXPECT_THROW(r.initMesh(), VCppLib::VException);
  EXPECT_TRUE(*v.initFlag == 0 && *r.initFlag == 0);
  // points far off: anglesVF above 5 degrees
  k.readMeshText("4 2 1\n0 0\n4 0\n2 3\n2 -3\n0 1 2\n0 3 1\n3 0.8\n2 -0.8\n");
  EXPECT_FALSE(k.isOrthogonal || k.eIsAcute[0] || k.eIsAcute[1]);
  EXPECT_NEAR(k.anglesVF[0], 90.0 - std::atan2(1.6, 1.0) * 57.29578, 1e-9);
}

TEST(MeshInit, LonLatMesh) {
  thMesh2D m, u;
  m.projection = "wgs84 lonlat";
  // at the central meridian of zone 32 on the equator; faces 3 and 4 end at 15.5 degrees, so
  // their midpoints (about 12.25) lie in zone 33
  m.readMeshText("4 2\n9 0\n9.01 0\n9.005 0.01\n15.5 0.01\n0 1 2\n1 3 2\n");
  EXPECT_TRUE(m.isLonLat && m.utmZone == 32 && m.nxUTM != m.nxCoor);  // mean longitude 10.63
  EXPECT_TRUE(near({m.nxUTM[0], m.nyUTM[0]}, {500000, 0}, 1e-6));
  // the first triangle: base and height 0.01 degrees, at about 111.3 and 110.6 km a degree
  EXPECT_NEAR(m.eArea[0], 0.5 * 0.01 * 111319.49 * 0.01 * 110574.0 * 0.9996 * 0.9996, 0.01 * m.eArea[0]);
  // centres and face midpoints stay in degrees
  EXPECT_EQ(arr(m.vfn + 6, 4), V({1, 3, 3, 2}));
  EXPECT_TRUE(near({m.exCoor[0], m.vfxCoor[3]}, {9.005, (9.01 + 15.5) / 2}));
  // each face is measured in the zone of its midpoint
  for (int f = 0; f < m.nvf; f++) {
    const int a = m.vfn[2 * f], b = m.vfn[2 * f + 1], zone = f >= 3 ? 33 : 32;
    double ax, ay, bx, by;
    VCppLib::latLon2UTM(m.nxCoor[a], m.nyCoor[a], zone, ax, ay);
    VCppLib::latLon2UTM(m.nxCoor[b], m.nyCoor[b], zone, bx, by);
    EXPECT_NEAR(m.vfl[f], std::hypot(bx - ax, by - ay), 1e-9 * m.vfl[f]) << "face " << f;
    EXPECT_NEAR(m.vfdx[f], bx - ax, 1e-6) << "face " << f;
  }
  // distances in the mesh's one zone: face 1 lies on the equator, northing 0, and element 0's
  // circumcentre (9.005, 0.00375) is mirrored in it; in zone 33 its northing would be 2 m more
  EXPECT_NEAR(m.vfDist[1], 2 * 0.00375 * 110574.0 * 0.9996, 1.0);
  EXPECT_NEAR(m.vfyNormL[1], -1.0, 1e-9);

  // zones of the mesh: south is negative, 60 is reduced to 0; a UTM projection leaves 32
  const std::pair<std::string, int> zones[] = {
      {"-60 -10\n-59.9 -10\n-59.95 -9.9\n", -21},  // floor(120.05/6)+1
      {"175 10\n175.1 10\n175.05 10.1\n", 0}};
  u.projection = "LONLAT";
  for (const auto& [nodes, zone] : zones) {
    u.readMeshText("3 1\n" + nodes + "0 1 2\n");
    EXPECT_EQ(u.utmZone, zone);
    EXPECT_TRUE(zone > 0 || u.nyUTM[0] > 8.0e6);  // false northing in the south
  }
  u.projection = "UTM33";
  u.readMeshText("3 1\n0 0\n1 0\n0 1\n0 1 2\n");
  EXPECT_EQ(V({u.utmZone, u.utmZoneFromProjection()}), V({32, 33}));
  u.projection = "utm-5x";
  EXPECT_EQ(u.utmZoneFromProjection(), -5);
}

TEST(MeshShare, CopiesClonesAndReplacedNodeArrays) {
  for (bool sourceFirst : {true, false}) {
    auto src = std::make_unique<thMesh2D>();
    thTest::stripMesh(*src, true, true);
    src->initElemNbrs();
    auto copy = std::make_unique<thMesh2D>(*src);
    EXPECT_TRUE(copy->vfe == src->vfe && copy->eNbr == src->eNbr && copy->initFlag == src->initFlag);
    std::unique_ptr<thMesh2D> c(src->clone());  // a clone shares the Voronoi points only
    EXPECT_TRUE(c->eVoronoiX == src->eVoronoiX && c->eVoronoiY == src->eVoronoiY &&
                c->nxCoor != src->nxCoor && c->vfe != src->vfe && c->initFlag != src->initFlag);
    ASSERT_EQ(copy->initMesh(), 0);  // new derived arrays in the copy only
    EXPECT_TRUE(copy->vfe != src->vfe && copy->anglesVF != src->anglesVF && copy->nxCoor == src->nxCoor);
    thMesh2D edited(*copy), assigned;
    ASSERT_EQ(edited.editAddNode(5, 5, 99, true), 0);  // node arrays of its own
    assigned = edited;
    (sourceFirst ? src : copy).reset();
    expectWholeStrip(sourceFirst ? *copy : *src);
    expectWholeStrip(*c);
    EXPECT_EQ(assigned.non, 9);
  }
  auto raw = std::make_unique<thMesh2D>();  // filled by hand, never initialised
  raw->non = 2;
  raw->nxCoor = new double[2]{1, 2};
  thMesh2D rawCopy(*raw);
  raw.reset();
  EXPECT_EQ(rawCopy.nxCoor[1], 2.0);

  // an editor replaces the node arrays and frees the old ones: the next run must not free them
  // again through nxUTM, which aliased them
  for (const char* projection : {"UTM32", "LONLAT"}) {
    thMesh2D e;
    e.projection = projection;
    e.readMeshText(thTest::gridMeshText(2, 1, 0.01, 0.01));
    for (double** p : {&e.nxCoor, &e.nyCoor}) *p = thTest::newArray(thTest::take(*p, e.non));
    e.nxCoor[0] = -0.001;
    EXPECT_EQ(e.initMesh(), 0);
    EXPECT_EQ(e.nxUTM == e.nxCoor, !e.isLonLat);
    EXPECT_DOUBLE_EQ(e.exCoor[0], (-0.001 + 0.01 + 0.01 + 0) / 4);
  }
}
