// A short demonstration of the support library: a few conversions printed to standard output.
#include <iostream>

#include "support/VCppLib.h"
#include "support/VDT.h"
#include "support/VFiles.h"
#include "support/VGeom.h"
#include "support/VStr.h"

using namespace VCppLib;

int main() {
  std::cout << "thalmod support library demonstration\n";

  int64_t t = VDT::strDT2longDT("2000-03-01 12:30:00");
  std::cout << "date round trip:  \"2000-03-01 12:30:00\" -> " << t << " s -> \"" << VDT::longDT2StrDT(t) << "\"\n";

  std::cout << "toString padding: 7 at width 2 -> \"" << VStr::toString<int>(7, -1, 2) << "\", -7 at width 3 -> \""
            << VStr::toString<int>(-7, -1, 3) << "\", 1.5 with 3 decimals -> \"" << VStr::toString<double>(1.5, 3)
            << "\"\n";

  std::cout << "sizeToStr:        1023 -> \"" << sizeToStr(1023) << "\", 1536 -> \"" << sizeToStr(1536)
            << "\", 1048576 -> \"" << sizeToStr(1048576) << "\"\n";

  double x, y, lon, lat;
  latLon2UTM(9.5, 45.3, 32, x, y);
  UTM2latLon(x, y, 32, lon, lat);
  std::cout << "UTM zone 32:      lon 9.5, lat 45.3 -> x " << VStr::toString<double>(x, 2) << ", y "
            << VStr::toString<double>(y, 2) << " -> lon " << VStr::toString<double>(lon, 6) << ", lat "
            << VStr::toString<double>(lat, 6) << "\n";

  std::cout << "tokenize:         \"a,,b\" at \",\" ->";
  for (const std::string& tok : VStr::tokenize("a,,b", ",", false)) std::cout << " [" << tok << "]";
  std::cout << "\n";

  try {
    VDT::strDT2longDT("2000-3-1");
  } catch (VException& e) {
    std::cout << "a bad date:       ";
    e.print();
  }
  return 0;
}
