// thal export-ugrid RUN OUT.nc: a result file of any readable format as a NetCDF-4 file that
// follows the UGRID 1.0 and CF conventions, for xarray and other general tools.
#include <iostream>
#include <string>

#include "facade/thResultFileWrapper.h"
#include "support/VFiles.h"
#include "thalCommands.h"

namespace thTool {

int cmdExportUgrid(const Args& args) {
  args.expectPositional(2, "thal export-ugrid RUN OUT.nc");
  const std::string& in = args.positional[0];
  const std::string& out = args.positional[1];
  if (!VCppLib::fileExists(in)) throw ToolError("No such file: '" + in + "'.");
  thWrapper::thResultFileWrapper rf;
  rf.filename(in);
  if (rf.readHeader() < 0) throw ToolError("Cannot read the result file '" + in + "'.");
  rf.toUgrid(out);
  std::cout << "written: " << out << " (UGRID 1.0, " << rf.items().size() << " items)\n";
  return 0;
}

}  // namespace thTool
