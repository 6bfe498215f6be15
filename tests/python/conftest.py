"""Shared fixtures: the sample run written by `thal sample` into a temporary folder."""
import os
import subprocess

import pytest


@pytest.fixture(scope="session")
def sample(tmp_path_factory):
    """Path of the sample run fjord.nc (and fjord_bathy.nc beside it)."""
    thal = os.environ.get("THAL_EXE", "")
    if not os.access(thal, os.X_OK):
        pytest.fail("THAL_EXE must name the built thal program (scripts/run-tests.sh sets it).")
    folder = tmp_path_factory.mktemp("sample")
    subprocess.run([thal, "sample", str(folder)], check=True, capture_output=True)
    return folder / "fjord.nc"
