#!/usr/bin/env python3
"""Compares what two builds of trellion make of 500 inputs, always the same ones: the cases, the
fuzzers' corpus and generated meshes, and those with faults put in.

Usage: foreign_bytes.py NATIVE_BUILD FOREIGN_PROGRAM"""

import concurrent.futures
import os
import pathlib
import random
import re
import subprocess
import sys
import tempfile

N_INPUTS = 500
TOP = pathlib.Path(__file__).resolve().parent.parent
FAMILIES = ("contour tri rows one mixed shuffle isolated gear bumps book numbers text").split()
OPTIONS = ([], [], ["-r"], ["-v"], ["-m4"], ["-s1"], ["-s3", "-r", "-v"])
NUMBER = re.compile(rb"-?\d*\.?\d+")
# Numbers of every length that is read at once, or is not, and some that are none.
NUMBERS = (b"0", b"-0", b"7", b"-.5", b".", b"-", b"1.", b"12345678", b"123456789", b"-1234567",
           b"99999.99", b"0.0005", b"1.0005", b"-2.00049", b"3.99951", b"2147483.647",
           b"2147483.648", b"-2147483", b"-2147484", b"1.5.2", b"00000012", b"1e5", b"+3")


def originals(make_mesh):
    files = sorted(TOP.glob("tests/cases/*/*.eps")) + sorted(TOP.glob("fuzz/corpus/pipeline/*"))
    texts = [file.read_bytes() for file in files]
    for seed, family in enumerate(FAMILIES):
        for polygons in (100, 700):
            command = [make_mesh, family, str(polygons), str(seed)]
            texts.append(subprocess.run(command, check=True, capture_output=True).stdout)
    return texts


def with_another_number(text, draw):
    numbers = list(NUMBER.finditer(text))
    if not numbers:
        return text
    one = draw.choice(numbers)
    number = draw.choice(NUMBERS) if draw.random() < 0.5 else draw.choice(numbers).group()
    return text[:one.start()] + number + text[one.end():]


def with_more_decimals(text, draw):
    """Moves every number by the same fraction: neighbours stay neighbours."""
    fraction = b"%04d" % draw.randrange(10000)
    end = draw.choice((2, 3, 4))
    return re.sub(rb"(?<![\w.])(\d{1,4})(?= \d| [ml]| moveto| lineto)",
                  rb"\1." + fraction[:end], text)


def with_bytes_put_in(text, draw):
    at = draw.randrange(len(text) + 1)
    return text[:at] + draw.randbytes(draw.randrange(1, 4)) + text[at:]


def with_a_part_left_out(text, draw):
    at = draw.randrange(len(text) + 1)
    return text[:at] + text[at + draw.randrange(1, 60):]


def with_a_part_twice(text, draw):
    at = draw.randrange(len(text) + 1)
    part = text[at:at + draw.randrange(1, 200)]
    return text[:at] + part + text[at:]


def with_other_line_ends(text, draw):
    return text.replace(b"\n", draw.choice((b"\r", b"\r\n", b"\n\n", b" \n")))


FAULTS = (with_another_number, with_another_number, with_more_decimals, with_bytes_put_in,
          with_a_part_left_out, with_a_part_twice, with_other_line_ends)


def inputs(make_mesh):
    """Pairs of a text and options."""
    texts = originals(make_mesh)
    draw = random.Random(13)
    result = [(text, OPTIONS[i % len(OPTIONS)]) for i, text in enumerate(texts)]
    while len(result) < N_INPUTS:
        text = draw.choice(texts)
        for _ in range(draw.randrange(1, 4)):
            text = draw.choice(FAULTS)(text, draw)
        result.append((text, draw.choice(OPTIONS)))
    return result


def masked(text):
    text = re.sub(rb"(Processing completed in ) *[0-9.]+", rb"\1", text)
    return re.sub(rb"(%%Processed by .*) at [0-9:]{5} on [0-9/]{10}", rb"\1", text)


def outcome(program, text, options):
    """The status, the console, standard error and the result, None where there is none."""
    with tempfile.TemporaryDirectory() as directory:
        at = pathlib.Path(directory)
        (at / "f.eps").write_bytes(text)
        run = subprocess.run([program, "f.eps", *options], cwd=at, capture_output=True, timeout=300)
        result = at / "f_r.eps"
        return (run.returncode, masked(run.stdout), run.stderr,
                masked(result.read_bytes()) if result.exists() else None)


def main():
    native = pathlib.Path(sys.argv[1]).resolve()
    foreign = pathlib.Path(sys.argv[2]).resolve()
    all_inputs = inputs(native / "bench" / "make_mesh")

    def compared(one):
        return [outcome(program, *one) for program in (native / "trellion", foreign)]

    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        outcomes = list(pool.map(compared, all_inputs))
    different = [i for i, (here, there) in enumerate(outcomes) if here != there]
    kept = foreign.parent.parent / "different"
    for i in different:
        kept.mkdir(exist_ok=True)
        (kept / f"{i}.eps").write_bytes(all_inputs[i][0])
        print(f"different: {kept}/{i}.eps {' '.join(all_inputs[i][1])}")
    joined = sum(b"mergers" in here[1] for here, _ in outcomes)
    ended = sum(here[0] != 0 for here, _ in outcomes)
    print(f"{foreign}: {len(outcomes)} inputs, polygons joined in {joined}, refused {ended}, "
          f"different {len(different)}")
    return 1 if different or joined < len(outcomes) // 2 else 0


sys.exit(main())
