#include "support/VStats.h"

#include <cmath>
#include <cstdint>

#include "support/VStr.h"

namespace VCppLib {

void meanStdRms(std::vector<double> v, double& mean, double& stdDev, double& rms) {
  double n = static_cast<double>(v.size());
  double sum = 0.0, sumSq = 0.0;
  for (double d : v) {
    sum += d;
    sumSq += d * d;
  }
  mean = sum / n;
  double dev = 0.0;
  for (double d : v) dev += (d - mean) * (d - mean);
  stdDev = std::sqrt(dev / n);
  rms = std::sqrt(sumSq / n);
}

std::string statsReport(std::vector<double> v, double& mean, double& stdDev, double& rms) {
  meanStdRms(v, mean, stdDev, rms);
  // Minimum and maximum are taken over magnitudes; the first of equal values keeps the place.
  double smallest = 1e37, largest = -1e37;
  int64_t iMin = -1, iMax = -1;
  for (size_t i = 0; i < v.size(); i++) {
    double a = std::fabs(v[i]);
    if (a > largest) {
      largest = a;
      iMax = static_cast<int64_t>(i);
    }
    if (a < smallest) {
      smallest = a;
      iMin = static_cast<int64_t>(i);
    }
  }
  using VStr::toString;
  return "count:\t" + toString(v.size()) + newline + "min:\t" + toString(smallest) +
         "\t(idx=" + toString(iMin) + ")" + newline + "max:\t" + toString(largest) +
         "\t(idx=" + toString(iMax) + ")" + newline + "mean:\t" + toString(mean) + newline + "variance:\t" +
         toString(stdDev) + newline + "RMS:\t" + toString(rms);
}

std::string statsReport(std::vector<double> v) {
  double mean, stdDev, rms;
  return statsReport(v, mean, stdDev, rms);
}

}  // namespace VCppLib
