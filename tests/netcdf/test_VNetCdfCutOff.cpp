// Files whose header promises more data than the file holds: a cut-off classic file is refused at
// open, and a NetCDF-4 variable declared far larger than the file can hold is refused before a
// read allocates for it.
#include <netcdf.h>
#include <sys/stat.h>

#include <string>

#include "netcdf/VNetCdf.h"
#include "testutil/thTestUtil.h"

using VCppLib::VNetCdf;

TEST(VNetCdfCutOff, CutClassicFilesAreRefused) {
  thTest::TempDir dir;
  // 8 doubles of v (64 bytes), three records of r: the file ends with the last record of r
  const std::string cdl =
      "netcdf c {\ndimensions:\n t = UNLIMITED ;\n x = 8 ;\nvariables:\n double v(x) ;\n int r(t) ;\n"
      "data:\n v = 1, 2, 3, 4, 5, 6, 7, 8 ;\n r = 1, 2, 3 ;\n}\n";
  for (const char* kind : {"classic", "64-bit-offset", "cdf5"}) {
    const std::string path = dir.file(std::string(kind) + ".nc");
    thTest::ncgen(cdl, path, kind);
    struct stat st;
    ASSERT_EQ(stat(path.c_str(), &st), 0);
    EXPECT_EQ(VNetCdf(path, false).nvars, 2) << kind;  // whole, it opens
    for (size_t cut : {1, 12, 40}) {                   // inside the last record, all records gone, inside v
      thTest::truncateFile(path, static_cast<size_t>(st.st_size) - cut);
      EXPECT_VEXCEPTION(VNetCdf(path, false),
                        "The NetCDF file '" + path + "' is cut off: its header places data beyond its end.");
    }
  }
}

TEST(VNetCdfCutOff, DeclaredBeyondTheFileIsRefused) {
  // x declared with 2^26 values of which two are written: HDF5 stores one chunk, a file of some
  // kilobytes that cannot hold 512 MB even at deflate's best of 1032 to 1.
  thTest::TempDir dir;
  const std::string path = dir.file("grid.nc");
  int id = 0, dx = 0, dy = 0, vx = 0, vy = 0, vz = 0;
  ASSERT_EQ(nc_create(path.c_str(), NC_NETCDF4, &id), NC_NOERR);
  nc_def_dim(id, "x", size_t{1} << 26, &dx);
  nc_def_dim(id, "y", 2, &dy);
  nc_def_var(id, "x", NC_DOUBLE, 1, &dx, &vx);
  size_t chunk = 1024;
  nc_def_var_chunking(id, vx, NC_CHUNKED, &chunk);
  nc_def_var(id, "y", NC_DOUBLE, 1, &dy, &vy);
  int zd[2] = {dy, dx};
  nc_def_var(id, "z", NC_FLOAT, 2, zd, &vz);
  const double two[2] = {0, 1};
  size_t start = 0, count = 2;
  nc_put_vara_double(id, vx, &start, &count, two);
  nc_put_var_double(id, vy, two);
  ASSERT_EQ(nc_close(id), NC_NOERR);
  struct stat st;
  ASSERT_EQ(stat(path.c_str(), &st), 0);
  ASSERT_LT(st.st_size, 1 << 16);

  VNetCdf nc(path, false);
  EXPECT_VEXCEPTION(nc.getGrid(0, 1, -1), "VNetCdf::getGrid: variable 'x' in '" + path +
                                              "' declares 67108864 values of 8 bytes, more than the file's " +
                                              std::to_string(st.st_size) + " bytes can hold.");
  nc.checkVarFitsFile(1, "test");  // y: two values, written
}
