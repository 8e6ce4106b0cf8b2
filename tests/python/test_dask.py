# SPDX-License-Identifier: MIT
"""The example with Dask: a scheduler and two worker processes say the same as one process."""

import os
import subprocess
import sys
import tempfile
import unittest

try:
    import distributed  # noqa: F401
except ImportError:
    distributed = None

EXAMPLE = os.path.join(os.path.dirname(__file__), "..", "..", "examples", "dask_sums", "main.py")


@unittest.skipIf(distributed is None, "Dask (python3-distributed) is not installed")
class Dask(unittest.TestCase):
    def test_sums(self):
        with tempfile.TemporaryDirectory() as folder:
            done = subprocess.run(
                [sys.executable, "-B", EXAMPLE, os.path.join(folder, "orders"), "--make", "6", "500"],
                capture_output=True,
                text=True,
                cwd=folder,
                timeout=120,
            )
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertRegex(done.stdout, r"(?s)2 workers.*ALFA.*the same from both")


if __name__ == "__main__":
    unittest.main()
