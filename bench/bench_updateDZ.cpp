// The thickness update of one timestep (updateDZ and updateDZf for one elevation field) on a model
// of 1,000,000 elements and 20 layers, against one pass that reads every cell's thickness and
// writes it back; and popHAC against initCells on the same mesh with sigma layers.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "benchModel.h"
#include "model/thModelInfo.h"

int main() {
  const int n = 1000;
  thalmod::thModelInfo mi;
  bench::buildModel(mi, n);
  const int32_t noe = mi.mesh2d.noe;
  std::printf("model: %d elements, %d layers, %d cells, %d faces with U-points, %d U-points\n", noe, mi.nol,
              mi.cells, mi.totNoUvf, mi.totNoUPnts);

  std::vector<double> h(noe), u(mi.totNoUPnts);
  for (int32_t e = 0; e < noe; e++)
    h[e] = 0.4 * std::sin(mi.mesh2d.exCoor[e] * 0.01) * std::cos(mi.mesh2d.eyCoor[e] * 0.013);
  for (int32_t i = 0; i < mi.totNoUPnts; i++) u[i] = std::sin(i * 0.7);
  volatile double one = 1.0;  // keeps the baseline's read and write from being folded away
  auto [update, pass] = bench::best(
      7,
      [&] {
        mi.updateDZ(h.data(), true);
        mi.updateDZf(h.data(), u.data(), 3, true, false);
      },
      [&] {
        const double f = one;
        for (int32_t e = 0; e < noe; e++) {
          double* row = mi.edz[e];
          for (int32_t k = 0, m = mi.nol - mi.ebli[e]; k < m; k++) row[k] *= f;
        }
      });
  std::printf(
      "updateDZ + updateDZf: %.4f s, pass over %d cell thicknesses: %.4f s, ratio %.2f (target <= 4)\n",
      update, mi.cells, pass, update / pass);

  // popHAC numbers cell e*nol+l: every column holds all layers. The stack becomes 20 sigma
  // layers of 1/20 over flat beds, the cells are set up as z-layers, and the layer type is set to
  // sigma afterwards. (Flat beds keep the lists at one entry per neighbour and cell: 80 million.)
  double init = bench::seconds([&] { mi.setFlatBottom(1.0, 20); });
  init = std::min(init, bench::seconds([&] { mi.initCells(); }));
  mi.layerType = thalmod::sigma;
  const double hac = bench::seconds([&] { mi.popHAC(false); });
  std::printf("popHAC (volumes): %.3f s, initCells of %d cells: %.3f s, ratio %.2f\n", hac, mi.cells, init,
              hac / init);
  return 0;
}
