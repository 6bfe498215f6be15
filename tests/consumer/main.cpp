// A program outside the project that uses the installed package.
#include "resultfile/thResultFile.h"
#include "support/VCppLib.h"

#include <iostream>

int main() {
  // Format detection works without any file on disk.
  thalmod::thResultFile rf("", -1);
  if (thalmod::fileFmtEnum2str(thalmod::str2fileFmtEnum("NC")) != "NC") return 1;
  try {
    throw VCppLib::VException("consumer ok");
  } catch (VCppLib::VException& e) {
    std::cout << e.message << "\n";
    return e.message == "consumer ok" ? 0 : 1;
  }
}
