"""Runs a tool: python3 -m soak opening --cycles 10000."""

import argparse
import importlib
import sys
from pathlib import Path

TOOLS = sorted(path.stem for path in Path(__file__).parent.glob("[a-z]*.py"))

parser = argparse.ArgumentParser(prog="python3 -m soak", description="Try to break the editor.")
parser.add_argument("tool", choices=TOOLS)
parser.add_argument("arguments", nargs=argparse.REMAINDER, help="of the tool, such as --help")
chosen = parser.parse_args()
sys.argv[0] = f"python3 -m soak {chosen.tool}"  # as it calls itself
sys.exit(importlib.import_module(f"soak.{chosen.tool}").main(chosen.arguments))
