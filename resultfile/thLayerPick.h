// The pick of one value per element out of a 3-D item, shared by the layer reads of all formats.
// Internal to the result-file sources.
#pragma once

#include <cstdint>

#include "model/thModelInfo.h"
#include "support/VCppLib.h"

namespace thalmod {

// layer: -1 the bottom cell of each element; 999 or more the top-most cell that does not hold
// delVal (searching down from the surface cell; delVal if all are deleted); otherwise an absolute
// layer, delVal for an element that does not reach down to it.
// valueAt(cell, v) fetches a cell's value into v and answers whether it could; an element whose
// value cannot be fetched keeps what out[e] held. Elements eFrom..eTo-1 (all by default).
template <typename F>
void pickLayer(const thModelInfo& mi, int32_t layer, float* out, F&& valueAt, int32_t eFrom = 0,
               int32_t eTo = -1) {
  const int32_t noe = eTo < 0 ? mi.mesh2d.noe : eTo, nol = mi.nol;
  const int32_t* bli = mi.botlayerIdx;
  const int32_t* ebli = mi.ebli;
  const float del = static_cast<float>(delVal);
  if (layer == -1) {
    for (int32_t e = eFrom; e < noe; ++e) valueAt(bli[e], out[e]);
  } else if (layer >= 999) {
    for (int32_t e = eFrom; e < noe; ++e) {
      float x = del;
      int32_t k = nol - ebli[e] - 1;
      bool ok = true;
      do {
        ok = valueAt(bli[e] + k, x);
        --k;
      } while (ok && x == del && k >= 0);
      if (ok) out[e] = x;
    }
  } else {
    for (int32_t e = eFrom; e < noe; ++e) {
      if (layer >= ebli[e])
        valueAt(bli[e] - ebli[e] + layer, out[e]);
      else
        out[e] = del;
    }
  }
}

}  // namespace thalmod
