#!/usr/bin/env python3
"""The library takes no memory from the standard heap, and knows no exceptions and no type information.

usage: imports.py NM LIBRARY.so LIBRARY.a
"""

import re
import sys

import check

FORBIDDEN = {
    "the standard heap": r"(?:(?:m|c|re|reallocarr|pv|v)alloc|free|cfree|reallocarray|posix_memalign|aligned_alloc"
                         r"|memalign|(?:str|wcs|strn)dup|v?asprintf|getline|getdelim|open_memstream)"
                         r"|_Zn[wa]\w*|_Zd[la]\w*",
    "exceptions": r"__cxa_(?!finalize$|atexit$)\w+|_Unwind_\w+|__gxx_personality\w*|_ZSt\d+__throw_\w+|_ZSt9terminatev",
    "type information": r"_ZT[ISV]\w*|__dynamic_cast",
    "constructors of static objects": r"__cxa_atexit|__cxa_guard_\w+",
    "the process's locale": r"(?:set|new|use)locale|localeconv|strtod\w*|strtof|atof|is(?:alpha|digit|space|alnum)"
                            r"|to(?:lower|upper)|__ctype_\w+",
    "threads": r"pthread_\w+",
}
# What every shared library carries along by its start files.
START_FILES = {"__cxa_finalize"}


def undefined_symbols(nm, *arguments):
    _, output = check.run(nm, "--undefined-only", *arguments)
    symbols = re.findall(r"^\s+[Uwv]\s+(\S+)$", output, re.M)
    return {symbol.split("@")[0] for symbol in symbols}


nm, shared, static = sys.argv[1:]
report = check.Report()
for library, arguments in ((shared, ("-D", shared)), (static, (static,))):
    symbols = undefined_symbols(nm, *arguments) - START_FILES
    report.hold(library, [] if "vfprintf" in symbols or "fopen" in symbols else ["no symbols could be read"])
    for subject, pattern in FORBIDDEN.items():
        found = sorted(symbol for symbol in symbols if re.fullmatch(pattern, symbol))
        report.hold(library, [f"uses {subject}: {symbol}" for symbol in found])
report.end()
