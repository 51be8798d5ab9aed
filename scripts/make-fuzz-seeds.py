#!/usr/bin/env python3
"""Writes the starting inputs of each fuzz target into fuzz/seeds/<target>/:
well-formed and almost well-formed inputs, laid out as the target reads them. Run again
after changing a target's input layout; the files are committed."""
import os
import shutil
import struct

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "fuzz", "seeds")
WHOLE = 0xF0  # the step byte meaning "all at once"


def u16(text):
    return text.encode("utf-16-le", "surrogatepass")


def converter_input(prefix, steps, data, units=b""):
    """[prefix] in-step out-step bytes: the same bytes are also read as UTF-16
    units by the converter targets."""
    return bytes(prefix) + bytes(steps) + data + units


SEEDS = {
    "fuzz_utf8": [
        converter_input([], [WHOLE, WHOLE], "plain ASCII text".encode()),
        converter_input([], [0, 0], "é€𝄞 mixed widths".encode()),
        converter_input([], [2, 1], "\ufeffBOM then text".encode()),
        converter_input([], [WHOLE, 3], b"\xc0\x80 overlong NUL"),
        converter_input([], [1, WHOLE], b"\xed\xa0\x80 encoded surrogate"),
        converter_input([], [WHOLE, WHOLE], b"truncated \xf0\x9f\x98"),
        converter_input([], [4, 4], b"\xf4\x90\x80\x80 beyond U+10FFFF"),
        converter_input([], [WHOLE, WHOLE], b"\xf8\x88\x80\x80\x80 five bytes"),
        converter_input([], [0, 0], u16("\ud800 lone high") + u16("\udc00")),
    ],
    "fuzz_utf16_32": [
        converter_input([0], [WHOLE, WHOLE], u16("little-endian text")),
        converter_input([1], [1, 1], "big-endian text".encode("utf-16-be")),
        converter_input([2], [WHOLE, WHOLE], b"\xfe\xff" + "with BOM".encode("utf-16-be")),
        converter_input([2], [3, 2], b"\xff\xfe" + u16("swapped BOM")),
        converter_input([0], [WHOLE, WHOLE], u16("pair \U0001D11E and lone \ud800x")),
        converter_input([1], [WHOLE, WHOLE], b"\xdc\x00\xd8\x00 reversed pair"),
        converter_input([3], [WHOLE, WHOLE], "UTF-32 \U0001F600".encode("utf-32-le")),
        converter_input([4], [2, 5], "UTF-32 big".encode("utf-32-be")),
        converter_input([5], [WHOLE, WHOLE], b"\x00\x00\xfe\xff" + "BOM".encode("utf-32-be")),
        converter_input([3], [WHOLE, WHOLE], struct.pack("<I", 0x110000) + struct.pack("<I", 0xD800)),
        converter_input([0], [WHOLE, WHOLE], b"odd length\x00"),
    ],
    "fuzz_single_byte": [
        converter_input([0], [WHOLE, WHOLE], bytes(range(0x20, 0x7F))),
        converter_input([1], [WHOLE, WHOLE], bytes(range(0x80, 0x100))),
        converter_input([2 | 4 | 8], [3, 1], bytes(range(0, 0x100, 3))),
        converter_input([3], [WHOLE, WHOLE], b"\x80\x81\x8d\x8f\x90\x9d\x9f"),
        converter_input([3 | 4 | 16], [1, 2], b"\x81 undefined in 1252"),
        converter_input([0 | 4 | 24], [WHOLE, WHOLE], b"\xff high bit", u16("\u20ac\u00e9")),
        converter_input([2], [WHOLE, WHOLE], u16("\u2591\u2592\u2593 box drawing")),
    ],
    "fuzz_code_page": [
        converter_input([17], [WHOLE, WHOLE], "日本語テキスト".encode("cp932")),
        converter_input([17 | 0x80], [1, 1], b"\x82\xa0\x81\x40 \x80 \xa0 \xfd"),
        converter_input([18], [WHOLE, WHOLE], "日本語".encode("euc_jp")),
        converter_input([18 | 0x80], [2, 3], b"\x8f\xa2\xaf \x8e\xb1 \xa4"),
        converter_input([1], [WHOLE, WHOLE], "Кириллица".encode("cp1251")),
        converter_input([2 | 0x80], [WHOLE, WHOLE], "Ελληνικά".encode("cp1253") + b"\xaa\xd2\xff"),
        converter_input([16], [WHOLE, WHOLE], "Привет".encode("cp866")),
        converter_input([4], [3, 3], "עברית".encode("cp1255") + b"\xca\xd9"),
    ],
    "fuzz_amp7": [
        converter_input([], [WHOLE, WHOLE], b"plain text"),
        converter_input([], [1, 1], b"Hi Mom -+Jjo--!"),
        converter_input([], [WHOLE, WHOLE], b"A+ImIDkQ."),
        converter_input([], [2, 3], b"+2D3cHg- a surrogate pair"),
        converter_input([], [WHOLE, WHOLE], b"a+-b literal plus"),
        converter_input([], [WHOLE, WHOLE], b"+AGEAYgBj unterminated"),
        converter_input([], [WHOLE, WHOLE], b"+! bad base64 +ZeVnLIqe-"),
        converter_input([], [WHOLE, WHOLE], b"+AAB- leftover bits", u16("~\\+")),
    ],
    "fuzz_format": [
        u16("Entry {0} of {1}: {2} (entry {0})\0forty-two\0a hundred\0text"),
        u16("{0}{0}{0}\0"),
        u16("{1} {0} {2}\0{1}\0{0}\0"),
        u16("{ 0} {00} {0:d} {-0} {0\0x"),
        u16("{10}{9}{8}{7}{6}{5}{4}{3}{2}{1}{0}\0a\0b\0c\0d\0e\0f\0g\0h\0i\0j\0k"),
        u16("{{0}} {0}} {{0}\0}{"),
        u16("{2147483647} {4294967296} {0}\0z"),
        u16("no placeholders at all\0unused"),
        u16("[{0}]\0\uffff"),
    ],
    "fuzz_big_number": [
        bytes([10]) + b"123456789012345678901234567890",
        bytes([10]) + b"-0",
        bytes([16]) + b"+DeadBeefCAFE",
        bytes([2]) + b"-101010101010101010101010101010101010101010101010101010101010101",
        bytes([36]) + b"zZ09",
        bytes([8]) + b"0778",
        bytes([1]) + b"1",
        bytes([37]) + b"10",
        bytes([10]) + b"12.340",
        bytes([10]) + b"-1.23E-7",
        bytes([10]) + b"1.2E+3",
        bytes([10]) + b".5",
        bytes([10]) + b"5.",
        bytes([10]) + b"1E2147483647",
        bytes([10]) + b"0E-10",
        bytes([10]) + b"+-1",
        bytes([10]) + b" 12",
    ],
    "fuzz_string_narrow": [
        bytes([0]) + b"default encoding text",
        bytes([5]) + "UTF-8: é€𝄞".encode(),
        bytes([5]) + b"\xc3 broken \xff",
        bytes([2]) + bytes(range(0x80, 0x100)),
        bytes([4]) + b"\x81\x8d\x80",
        bytes([6]) + u16("UTF-16LE \ud83d\ude00"),
        bytes([7]) + "UTF-16BE".encode("utf-16-be") + b"\xd8\x00",
        bytes([8]) + "UTF-32".encode("utf-32-le"),
        bytes([10]) + b"Hi Mom -+Jjo--!",
        bytes([17]) + "日本語".encode("cp932"),
        bytes([18]) + "日本語".encode("euc_jp"),
        bytes([21]) + b"unknown encoding name",
        bytes([1]) + b"\x80 not ASCII",
    ],
    "fuzz_hash_map": [
        # Pairs of bytes: operation in the top three bits of the first, key in
        # the low bit of the first and the second.
        bytes([1]) + bytes(b for k in range(40) for b in (0x02, k)) + bytes(b for k in range(0, 40, 3) for b in (0x60, k)),
        bytes([0]) + bytes(b for k in range(60) for b in (0x05, k)) + bytes([0xA0, 7, 0xA0, 3, 0xE0, 9]),
        bytes([1]) + bytes(b for k in range(30) for b in (0x02, k)) + bytes([0xC0, 0, 0x01, 5, 0xE0, 5]),
        bytes([0]) + bytes([0x00, 1, 0x80, 1, 0x00, 1, 0xA0, 0, 0xE0, 1]),
        bytes([1]) + bytes(b for k in range(20) for b in (0x01 | 0x20, k)) + bytes(b for k in range(20) for b in (0x81, k)),
        # The component map: one class, then the other class in the same chains.
        bytes([2]) + bytes(b for k in range(80) for b in (0x02, k)) + bytes(b for k in range(0, 80, 5) for b in (0x60, k)),
        bytes([2]) + bytes(b for k in range(40) for b in (0x02, k)) + bytes(b for k in range(8) for b in (0x03, k))
        + bytes([0xA0, 16, 0x80, 24, 0xE0, 8]),
    ],
}

DICTS = {
    "fuzz_utf8": [b"\xef\xbb\xbf", b"\xc0\x80", b"\xed\xa0\x80", b"\xed\xbf\xbf", b"\xf4\x8f\xbf\xbf",
                  b"\xf4\x90\x80\x80", b"\xe2\x82\xac", b"\xf0\x9f\x98\x80", b"\x80", b"\xbf"],
    "fuzz_utf16_32": [b"\xff\xfe", b"\xfe\xff", b"\x00\xd8", b"\x00\xdc", b"\xff\xfe\x00\x00",
                      b"\x00\x00\xfe\xff", b"\x00\x00\x11\x00", b"\x3d\xd8\x00\xde"],
    "fuzz_single_byte": [b"\x80", b"\x81", b"\x8d", b"\x9f", b"\xa0", b"\xff", b"\xac\x20", b"\x91\x25"],
    "fuzz_code_page": [b"\x81\x40", b"\x82\xa0", b"\x8e\xb1", b"\x8f\xa2\xaf", b"\xa4\xa2", b"\xfc\xfc",
                       b"\x80", b"\xa0", b"\xfd"],
    "fuzz_amp7": [b"+", b"-", b"+-", b"+2D3cHg-", b"+AGE-", b"+ImIDkQ", b"AAA", b"///", b"+++"],
    "fuzz_format": [u16("{0}"), u16("{1}"), u16("{10}"), u16("{00}"), u16("{"), u16("}"), b"\x00\x00",
                    u16("{2147483646}"), u16("\uffff")],
    "fuzz_big_number": [b"+", b"-", b".", b"E", b"e", b"E+", b"E-", b"0x", b"2147483647", b"2147483648",
                        b"9999999999999999999", b"zz"],
    "fuzz_string_narrow": [b"\xc3\xa9", b"\xef\xbb\xbf", b"\xff\xfe", b"\x00\xd8", b"+-", b"\x82\xa0",
                           b"\x8e\xb1", b"\x80"],
    "fuzz_hash_map": [b"\x01\x00", b"\x61\x00", b"\x81\x00", b"\xa1\x00", b"\xc0\x00", b"\xe1\x00"],
}


def dict_line(token):
    return '"' + "".join("\\x%02X" % b for b in token) + '"'


def main():
    for target, seeds in SEEDS.items():
        folder = os.path.join(ROOT, target)
        shutil.rmtree(folder, ignore_errors=True)
        os.makedirs(folder)
        for n, seed in enumerate(seeds):
            with open(os.path.join(folder, "seed-%02d" % n), "wb") as f:
                f.write(seed)
    dict_folder = os.path.join(ROOT, "..", "dict")
    os.makedirs(dict_folder, exist_ok=True)
    for target, tokens in DICTS.items():
        with open(os.path.join(dict_folder, target + ".dict"), "w") as f:
            f.write("# Tokens for %s (written by scripts/make-fuzz-seeds.py)\n" % target)
            for token in tokens:
                f.write(dict_line(token) + "\n")


if __name__ == "__main__":
    main()
