"""The module against the values stored in the sample run, its errors, and the UGRID export."""
import os
import subprocess

import netCDF4
import numpy as np
import pytest
import xarray as xr

import thalmod

NOON = "2024-06-01 12:00:00"  # timestep 12 of the hourly run


@pytest.fixture
def rf(sample):
    with thalmod.ResultFile(str(sample)) as f:
        yield f


@pytest.fixture
def raw(sample):
    with netCDF4.Dataset(sample) as ds:
        ds.set_auto_mask(False)
        yield ds


def top_cells(raw):
    """Cell number of each column's top cell: columns bottom up, one after the other."""
    nol = raw.dimensions["layers"].size
    ebli = raw["elemBottomLayerIdx"][:]
    return np.cumsum(nol - ebli) - 1


def test_reads_match_the_stored_values(rf, raw):
    assert rf.items == ["temperature", "salinity", "elevation"]
    mesh = rf.mesh
    np.testing.assert_array_equal(mesh.node_x, raw["nodeXCoor"][:])
    np.testing.assert_array_equal(mesh.en, raw["connectivity"][:])
    temp = raw["temperature"][12].astype(np.float64)
    np.testing.assert_array_equal(rf.read_item("temperature", NOON), temp)
    np.testing.assert_array_equal(rf.read_layer(0, 12, "surface"), temp[top_cells(raw)])
    np.testing.assert_array_equal(rf.read_series("elevation", 7), raw["elevation"][:, 7])
    cells = top_cells(raw)
    np.testing.assert_array_equal(rf.read_series(0, 9, "surface"), raw["temperature"][:, cells[9]])
    np.testing.assert_array_equal(rf.times.astype(np.int64), raw["time"][:])
    tri, elem = mesh.triangles()
    assert tri.shape == (mesh.noe, 3) and np.array_equal(elem, np.arange(mesh.noe))


def test_arrays_are_handed_over_without_a_copy(rf):
    layer = rf.read_layer("salinity", 3)
    assert not layer.flags.owndata and layer.base is not None
    assert layer.dtype == np.float64 and layer.shape == (rf.mesh.noe,)


def test_error_carries_the_library_message(rf, raw):
    assert issubclass(thalmod.Error, RuntimeError)
    with pytest.raises(thalmod.Error) as e:
        rf.read_profile(0, 0, 0)
    assert str(e.value) == "Not implemented."
    ebli = int(raw["elemBottomLayerIdx"][0])
    with pytest.raises(thalmod.Error) as e:
        rf.read_series("temperature", 0, 0)
    assert str(e.value) == (f"Layer 0 is below bottom. There are {20 - ebli} layers in element 0, "
                            f"numbered (bottom) {ebli} to 19 (surface).")


@pytest.mark.parametrize("call, error", [
    (lambda f: f.read_layer(3, 0), IndexError),
    (lambda f: f.read_layer("depth", 0), KeyError),
    (lambda f: f.read_layer(0, -1), IndexError),
    (lambda f: f.read_layer(0, 2**40), OverflowError),
    (lambda f: f.read_layer(0, 10**6), thalmod.Error),
    (lambda f: f.read_layer(0, "2031-01-01 00:00:00"), KeyError),
    (lambda f: f.read_layer(0, 0, 20), IndexError),
    (lambda f: f.read_layer(0, 0, "middle"), ValueError),
    (lambda f: f.read_layer(0.5, 0), TypeError),
    (lambda f: f.read_item(0, 0, [0, -3]), IndexError),
    (lambda f: f.read_series(0, 10**9), IndexError),
    (lambda f: f.read_series(0, 0, 19, 40, 10), IndexError),
    (lambda f: f.extract_section(0, 0, [1.0], [2.0], [1.0], 10.0), ValueError),
    (lambda f: f.paint_layer(0, 0, "top", 0, 10, (0, 1, 0, 1), (0, 1), [1, 2]), ValueError),
    (lambda f: f.model.section_mesh([], []), ValueError),
])
def test_bad_input_raises(rf, call, error):
    with pytest.raises(error):
        call(rf)


def test_closed_file_and_missing_file(sample):
    f = thalmod.ResultFile(str(sample))
    mesh, model = f.mesh, f.model
    f.close()
    for call in (lambda: f.read_layer(0, 0), lambda: mesh.node_x, lambda: model.dz, lambda: f.items):
        with pytest.raises(ValueError, match="is closed"):
            call()
    with pytest.raises(FileNotFoundError):
        thalmod.ResultFile(str(sample) + ".none")


def test_painting_gives_rows_of_colours(rf, sample):
    m = rf.mesh
    extent = (m.node_x.min(), m.node_x.max(), m.node_y.min(), m.node_y.max())
    img = rf.paint_layer("temperature", NOON, "top", 120, 50, extent, (5.0, 15.0), [0xFF0000FF, 0xFFFF0000])
    assert img.shape == (50, 120) and img.dtype == np.uint32
    bathy = thalmod.paint_bathy(str(sample.with_name("fjord_bathy.nc")), 80, 30,
                                (extent[0] - 1e6, extent[1], extent[2], extent[3]), [0xFF000000, 0xFFFFFFFF],
                                zrange=(0.0, 150.0))
    assert bathy.shape == (30, 80) and bathy[15, 0] == 0xFFFFFFFF  # left of the grid


def test_ugrid_export_opens_in_xarray_with_the_same_values(rf, sample, tmp_path):
    out = tmp_path / "fjord_ugrid.nc"
    rf.to_ugrid(str(out))
    by_thal = tmp_path / "by_thal.nc"
    subprocess.run([os.environ["THAL_EXE"], "export-ugrid", str(sample), str(by_thal)], check=True)
    assert by_thal.stat().st_size == out.stat().st_size
    header = subprocess.run(["ncdump", "-h", str(out)], check=True, capture_output=True, text=True).stdout
    for text in (':Conventions = "CF-1.8 UGRID-1.0"', 'mesh:cf_role = "mesh_topology"',
                 'mesh:face_node_connectivity = "mesh_face_nodes"', "temperature:_FillValue = -1.e-30f"):
        assert text in header
    delval = np.float32(thalmod.delval)
    with xr.open_dataset(out) as ds:
        np.testing.assert_array_equal(ds["time"].values, rf.times.astype("datetime64[ns]"))
        np.testing.assert_array_equal(ds["layer"].values, rf.model.layer_depth)
        for t, k in ((0, 19), (12, 10), (47, 0)):
            lib = rf.read_layer("temperature", t, k)
            np.testing.assert_array_equal(ds["temperature"][t, :, k].values.astype(np.float64),
                                          np.where(lib == delval, np.nan, lib))
        np.testing.assert_array_equal(ds["elevation"][12].values, rf.read_item("elevation", 12))
    with netCDF4.Dataset(out) as nc:
        nc.set_auto_mask(False)
        nodes = nc["mesh_face_nodes"][:]
        np.testing.assert_array_equal(nodes[:, :3].ravel(), rf.mesh.en)
        assert (nodes[:, 3] == -1).all()  # triangles only
        np.testing.assert_array_equal(nc["salinity"][5, :, 19], rf.read_layer("salinity", 5, 19))
