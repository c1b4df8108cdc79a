message("skipped: node missing; scripts/setup installs it")
