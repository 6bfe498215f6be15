// A program outside the project that uses the installed package.
#include "resultfile/thResultFile.h"
#include "support/VCppLib.h"

#include <iostream>

int main() {
  try {
    throw VCppLib::VException("consumer ok");
  } catch (VCppLib::VException& e) {
    std::cout << e.message << "\n";
    return e.message == "consumer ok" ? 0 : 1;
  }
}
