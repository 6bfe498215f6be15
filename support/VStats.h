// Summaries of a vector of doubles, as numbers and as a text report.
#pragma once

#include <string>
#include <vector>

#include "support/VCppLib.h"

namespace VCppLib {

// Mean, population standard deviation (dividing by n) and root mean square; NaN for no values.
void meanStdRms(std::vector<double> v, double& mean, double& stdDev, double& rms);
// Six lines: count, min and max of the absolute values with their indices, mean, "variance"
// (which carries the standard deviation) and RMS.
std::string statsReport(std::vector<double> v, double& mean, double& stdDev, double& rms);
std::string statsReport(std::vector<double> v);

}  // namespace VCppLib
