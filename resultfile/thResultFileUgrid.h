// Export of a result file as a NetCDF-4 file that follows the UGRID 1.0 and CF conventions, so that
// general tools (xarray, ncview, QGIS, ...) read the mesh, the layers, the time axis and the items.
//
// Layout of the file written (dimension names in brackets; numbering as in the library: nodes,
// elements and faces from 0, layer 0 the deepest):
// - `mesh`: the topology variable (cf_role mesh_topology). The library's elements are UGRID
//   faces [face], its faces UGRID edges [edge]; boundary edges (open, then closed) [boundary].
// - `mesh_face_nodes` [face, max_face_nodes]: at least 4 columns, -1 (the fill value) after the
//   last node of a triangle; node coordinates, element centres, face midpoints, node and face
//   types, the sea bed depth and bottom layer of each element.
// - `layer` [layer]: depth of each layer centre (positive down) with `layer_bnds`, and the
//   interfaces [interface], nol+1 depths from the bottom of layer 0 up to the top of layer nol-1.
// - `time` [time, unlimited]: seconds since 1970-01-01 00:00:00.
// - one float variable per item: [time, face, layer] for a 3-D item (cells), [time, face] for a
//   2-D item (noe values), [time, edge, layer] for an item on the U-points, [time, <item>_values]
//   for any other length. Where a column does not reach a layer the value is the deleted value,
//   which is the variables' _FillValue.
#pragma once

#include <string>

#include "resultfile/thResultFile.h"

namespace thalmod {

// Writes every item and timestep of `rf` (its header read; "^" files of an EMB run included) into
// the new file `outName`, which is replaced if it exists. Raises a VException when rf holds no
// mesh, when outName is rf's own file, or when an item cannot be read; a file begun is removed.
void writeUgrid(thResultFile& rf, const std::string& outName);

// Opens `inName` (any readable format), reads its header and writes it as above.
void exportUgrid(const std::string& inName, const std::string& outName);

}  // namespace thalmod
