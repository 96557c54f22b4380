import unittest
class Release(unittest.TestCase): pass
