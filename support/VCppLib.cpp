#include "support/VCppLib.h"

#include <iostream>

namespace VCppLib {
void VException::print() const { std::cout << message << "\n"; }
}  // namespace VCppLib

namespace thGlobal {
const std::string email = "thalmod-support@example.org";
const std::string errTail = " If this error message makes no sense to you, please contact " + email;
}  // namespace thGlobal
