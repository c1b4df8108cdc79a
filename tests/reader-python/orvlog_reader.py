#!/usr/bin/env python3
"""Reads a log and prints what it says as JSON. A reader written from the pages in docs/, to hold them."""

import json
import sys

import log_facts

if __name__ == "__main__":
    json.dump(log_facts.of_log(sys.argv[1]), sys.stdout, indent=1, sort_keys=True)
    print()
