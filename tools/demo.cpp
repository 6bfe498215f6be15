// A short demonstration of the support library.
#include "support/VCppLib.h"

#include <iostream>

int main() {
  std::cout << "thalmod support library demonstration\n";
  try {
    throw VCppLib::VException("A VException carries its message.");
  } catch (VCppLib::VException& e) {
    e.print();
  }
  return 0;
}
