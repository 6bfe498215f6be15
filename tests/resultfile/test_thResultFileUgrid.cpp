// The UGRID export of the hand-made small model: the conventions attributes, the topology and the
// item values spread over faces and layers, checked against the values worked out by hand.

#include <netcdf.h>

#include <vector>

#include "resultfile/thResultFileUgrid.h"
#include "testutil/thResultFixtures.h"
#include "testutil/thTestUtil.h"

using namespace thalmod;
using thTest::SmallModel;

namespace {

template <typename T>
std::vector<T> getVar(int id, const char* name, size_t n) {
  int v = -1;
  EXPECT_EQ(nc_inq_varid(id, name, &v), NC_NOERR) << name;
  std::vector<T> out(n);
  if constexpr (std::is_same_v<T, float>)
    nc_get_var_float(id, v, out.data());
  else if constexpr (std::is_same_v<T, double>)
    nc_get_var_double(id, v, out.data());
  else
    nc_get_var_int(id, v, out.data());
  return out;
}

}  // namespace

TEST(thResultFileUgrid, SmallModelByHand) {
  thTest::TempDir dir;
  const std::string in = dir.file("small.nc"), out = dir.file("small_ugrid.nc");
  thTest::writeSmallModelNc(in);
  exportUgrid(in, out);

  const std::string hdr = thTest::ncdump(out, "-h");
  for (const char* s :
       {":Conventions = \"CF-1.8 UGRID-1.0\"", "mesh:cf_role = \"mesh_topology\"",
        "mesh:face_node_connectivity = \"mesh_face_nodes\"", "mesh_face_nodes:_FillValue = -1",
        "float temp(time, face, layer)", "float elev(time, face)", "temp:location = \"face\"",
        "time:units = \"seconds since 1970-01-01 00:00:00\"", "boundary = 8"})
    EXPECT_NE(hdr.find(s), std::string::npos) << s;

  int id = -1;
  ASSERT_EQ(nc_open(out.c_str(), NC_NOWRITE, &id), NC_NOERR);
  // e2 is the triangle 2 3 7: its fourth node is the fill value
  EXPECT_EQ(getVar<int>(id, "mesh_face_nodes", 16),
            (std::vector<int>{0, 1, 5, 4, 1, 2, 6, 5, 2, 3, 7, -1, 2, 7, 6, -1}));
  // the open face n0-n4 comes first among the boundary faces, the 7 closed ones after it
  EXPECT_EQ(getVar<int>(id, "mesh_boundary_type", 8), (std::vector<int>{1, 99, 99, 99, 99, 99, 99, 99}));
  EXPECT_EQ(getVar<double>(id, "interface", 4), (std::vector<double>{17, 7, 2, 0}));
  // temp at timestep 1, by face and layer: e0 cells 0 1 2, e1 cells 3 4 from layer 1, e2 cell 5 at
  // layer 2, e3 cells 6 7 8; cells 1, 2 and 8 are deleted then, as is what no column reaches
  const float D = delVal;
  std::vector<float> temp = getVar<float>(id, "temp", 3 * 4 * 3);
  std::vector<float> t1(temp.begin() + 12, temp.begin() + 24);
  EXPECT_EQ(t1, (std::vector<float>{100.25f, D, D, D, 103.25f, 104.25f, D, D, 105.25f, 106.25f, 107.25f, D}));
  std::vector<float> elev = getVar<float>(id, "elev", 12);
  for (int t = 0; t < 3; ++t)
    for (int e = 0; e < 4; ++e) EXPECT_EQ(elev[4 * t + e], SmallModel::elev(t, e));
  long long times[3];
  int tv = -1;
  nc_inq_varid(id, "time", &tv);
  nc_get_var_longlong(id, tv, times);
  EXPECT_EQ(times[2], SmallModel::startDT + 7200);
  nc_close(id);

  thResultFile rf(in);
  EXPECT_VEXCEPTION(writeUgrid(rf, in), "writeUgrid: the output '" + in + "' is the result file itself.");
}
