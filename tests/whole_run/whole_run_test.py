"""Whole runs of the real program, in a window under Wine: made trees in, backups out.

usage: scripts/in_wine.sh python3 tests/whole_run/whole_run_test.py [NAME...]
Drive Q: holds the sources, drive N: the destinations. The cases are in the modules beside this one.
"""
import sys

from fixture import build_onlooker
from case_report import run_cases
from copy_cases import CopyCases
from disturbance_cases import DisturbanceCases
from faulty_fs_cases import FaultyFsCases
from network_cases import NetworkCases
from night_cases import NightCases
from nothing_new_cases import NothingNewCases
from power_cut_cases import PowerCutCases
from scale_cases import ScaleCases
from silent_loss_cases import SilentLossCases
from unattended_cases import UnattendedCases

if __name__ == "__main__":
    build_onlooker()
    sys.exit(run_cases([CopyCases, UnattendedCases, DisturbanceCases, NightCases, FaultyFsCases, SilentLossCases,
                        NothingNewCases, NetworkCases, PowerCutCases, ScaleCases], sys.argv[1:]))
