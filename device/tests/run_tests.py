"""Runs every device/tests/test_*.py; prints 'N passed, N failed' and fails
when a test fails or none ran."""
import os
import sys
import unittest

here = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [here, os.path.join(here, "..", "client")]
suite = unittest.defaultTestLoader.discover(here, pattern="test_*.py")
result = unittest.TextTestRunner(verbosity=2).run(suite)
failed = len(result.failures) + len(result.errors)
passed = result.testsRun - failed - len(result.skipped)
print(f"{passed} passed, {failed} failed, {len(result.skipped)} skipped")
sys.exit(0 if failed == 0 and passed > 0 else 1)
