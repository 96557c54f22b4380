import unittest
class UpdateRoundTrip(unittest.TestCase): pass
