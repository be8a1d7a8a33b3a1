#!/usr/bin/env python3
"""Writes the hand-made part of the corpora below fuzz/corpus: small inputs that take a fuzzer to where the interesting
places are. Files there that this script does not write are kept: they were found by fuzzing."""
import pathlib
import struct

ROOT = pathlib.Path(__file__).parent / "corpus"


def put(target, name, data):
    assert len(data) <= 4096, name
    folder = ROOT / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / name).write_bytes(data)


# Calibration files.

def record(identifier, version, data, length=None):
    return struct.pack("<III", identifier, version, len(data) if length is None else length) + data


def number(identifier, value, version=1):
    return record(identifier, version, struct.pack("<I", value))


def correction(key, width, height, exposure=0.5, intensity=100.0, pixels=None):
    pixels = range(1000, 1000 + width * height) if pixels is None else pixels
    return (record(62, 1, b"", (576 + 2 * width * height) & 0xFFFFFFFF) + record(63, 1, key.encode("latin-1").ljust(512, b"\0")) +
            number(64, width) + number(65, height) + record(66, 1, struct.pack("<f", exposure)) +
            record(67, 1, struct.pack("<f", intensity)) +
            record(68, 1, b"".join(struct.pack("<H", pixel) for pixel in pixels), (2 * width * height) & 0xFFFFFFFF))


def calibration_file(corrections, names=None, count=None):
    grouping = b""
    if names is not None:
        grouping = number(69, len(names), 2) + b"".join(record(70, 2, n.encode().ljust(16, b"\0")) for n in names)
    return (b"Background Correction File" + struct.pack("<I", 1 if names is None else 2) + grouping +
            number(61, len(corrections) if count is None else count) + b"".join(corrections))


def calibration_files():
    dark = correction("dark", 2, 2)
    seeds = {
        "empty_list": calibration_file([]),
        "one": calibration_file([dark]),
        "two": calibration_file([dark, correction("Flat,20 C", 1, 3, 0.1, 50.0, [65535, 0, 258])]),
        "three_of_one_pixel": calibration_file([correction(k, 1, 1) for k in "abc"]),
        "same_key": calibration_file([dark, correction("DARK", 1, 1)]),
        "no_key": calibration_file([correction("", 1, 1)]),
        "longest_key": calibration_file([correction("k" * 512, 1, 1)]),
        "zero_product": calibration_file([dark, correction("z", 1, 1, 1e-30, 1e-30)]),
        "not_a_number": calibration_file([correction("n", 1, 1, float("nan"), -1.0)]),
        "infinite": calibration_file([correction("i", 1, 1, float("inf"), 1.0)]),
        "no_pixels": calibration_file([correction("n", 3, 0), dark]),
        "one_row": calibration_file([correction("w", 40, 1)]),
        "one_column": calibration_file([correction("h", 1, 40)]),
        "too_many_announced": calibration_file([dark], count=5),
        "endless": calibration_file([dark], count=0x7FFFFFFF),
        "negative_count": calibration_file([dark], count=0x80000000),
        "huge_size": calibration_file([correction("x", 0x10000, 0x10000, pixels=[1])]),
        "size_that_wraps": calibration_file([correction("x", 0x8001, 0x10000, pixels=[1])]),
        "larger_than_the_file": calibration_file([correction("x", 1000, 1000, pixels=[1, 2, 3])]),
        "grouped_empty": calibration_file([], ["A"]),
        "grouped": calibration_file([correction("A,1,B,2", 2, 1), correction("A,1,B,2,x", 1, 1)], ["A", "B"]),
        "grouped_without_names": calibration_file([dark], []),
        "grouped_longest_name": calibration_file([correction("SensorTemperatur,20", 1, 1)], ["SensorTemperatur"]),
        "grouped_empty_name": calibration_file([dark], [""]),
        "other_version": b"Background Correction File" + struct.pack("<I", 3),
        "no_version": b"Background Correction File",
        "other_text": b"Background Correction Fool" + struct.pack("<I", 1),
    }
    damaged = bytearray(seeds["two"])
    seeds["damaged_identifier"] = bytes(damaged[:46]) + b"\x3d" + bytes(damaged[47:])
    seeds["damaged_length"] = bytes(damaged[:54 + 8]) + b"\x08\0\0\0" + bytes(damaged[54 + 12:])
    seeds["cut_in_pixels"] = bytes(damaged[:-3])
    seeds["cut_in_second"] = bytes(damaged[:-400])
    seeds["goes_back"] = calibration_file([record(62, 2, b"", 46)], count=9)
    seeds["goes_back_to_the_count"] = calibration_file([record(1, 1, b"", 30)], count=1000)
    # A name's data is read from offset 30 on, and the next name's record from where it began.
    seeds["names_beyond_the_cap"] = (b"Background Correction File" + struct.pack("<I", 2) + number(69, 65537, 2) +
                                     record(70, 2, b"", 30))
    for name, data in seeds.items():
        put("calibration_file", name, data)


# Keys and file names.

def groupings():
    lines = {
        "two_names": ["C:\\cal\\store_A_1_B_2", "C:\\cal\\store", "A;B", "1;2", "A,1,B,2", "B,2,A,1", "A,1", "A,,B,2"],
        "one_name": ["store.dat_Gain_1", "store.dat", "Gain", "1", "Gain,1,dark", "gain,1", "Gain"],
        "no_names": ["d\\s", "d\\s", "", "", "dark"],
        "same_name_twice": ["s_A_1_A_2", "s", "A;A", "1;2", "A,1,A,2"],
        "underscores": ["s_A_B_1_C_2", "s", "A_B;C", "1;2_3", "A_B,1,C,2"],
        "name_in_the_folder": ["C:\\_A_\\s_A_1", "C:\\_A_\\s", "A", "1", "A,1"],
        "prefix": ["C:\\cal\\store_A_1", "C:\\cal\\s", "A", "", "A,"],
        "empty_value": ["s_A__B_2", "s", "A;B", ";2", ",A,,1,,B,2,"],
        "forward": ["/cal/sub\\s_A_1", "/cal/sub\\s", "A", "1", "A,/1", "A,\\1"],
        "high_bytes": ["\xe9\xff_\xe9_\x80", "\xe9\xff", "\xe9", "\x80", "\xe9,\x80", "\xc9,\x80"],
        "long": ["s" * 300, "S" * 300, "A;B;C;D;E;F", "1;2;3;4;5;6", "A,1,B,2,C,3,D,4,E,5,F,6"],
        "empty": [""],
        "delimiters": ["__,,__", "_", "_;,", ",", ",,,", "_,_", "A,1,,,A,2"],
    }
    for name, texts in lines.items():
        put("grouping", name, "\n".join(texts).encode("latin-1"))


# Sequences of operations, in the order in which FuzzOperations.cpp takes them apart. Objects 0 and 1 are live
# processors, 2 and 3 stores with the grouping names A and B, unless made otherwise.

KEYS = ["A,1,B,2", "a,1,b,2", "A,1,B,3", "B,2,A,1", "A,2,B,1,x", "A,1", "dark", "DARK", "A,1,B,2,y", "A,3", "", "A_1,B\\"]
PATHS = ["d\\s", "d/s", "d\\s_A_1_B_2", "d\\s_A_1", "d\\t", "t", "t_A_2", "gone\\x", "", "d", "d\\f", "s_A_1_B_2"]
FLOATS = ["1", "0.5", "100", "-1", "0", "-0", "nan", "inf", "-inf", "least", "small", "large"]
LONGEST_KEY, CUT_KEY, CUT_GROUP_KEY, FREE_TEXT = range(len(KEYS), len(KEYS) + 4)


def free(choice, text):
    return bytes([choice, len(text)]) + text


def key(text):
    """One of KEYS, one of the choices after them, or any bytes."""
    if isinstance(text, bytes):
        return free(FREE_TEXT, text)
    return bytes([KEYS.index(text)]) if isinstance(text, str) else bytes([text])


def value(text):
    return bytes([FLOATS.index(text)])


def path(text):
    return free(len(PATHS), text) if isinstance(text, bytes) else bytes([PATHS.index(text)])


def small(number_):
    return bytes([number_ + 2])


def add(which, text, width=2, height=2, frames=1, exposure="1", intensity="100", refusal=0):
    return (bytes([0, which]) + key(text) + bytes([refusal, width - 1, height - 1, frames - 1]) + b"\x11\x22\x33\x44" +
            value(exposure) + value(intensity))


def activate(which, text=None):
    return bytes([2, which, 0]) if text is None else bytes([2, which, 4, 0]) + key(text)


def activate_given(which, index):
    return bytes([2, which, 1, index])


def delete(which, text):
    return bytes([4, which, 4, 0]) + key(text)


def delete_given(which, index):
    return bytes([4, which, 1, index])


def level(which, percent):
    return bytes([5, which, 1, percent])


def exposure(which, seconds, percent):
    return bytes([6, which]) + value(seconds) + value(percent)


def region(which, left, top, width, height):
    return bytes([7, which]) + small(left) + small(top) + small(width) + small(height)


def apply(which, lengths=0, null=False, target=0, flags=0, nested=b""):
    return bytes([8, which, lengths, 0 if null else 1, target, flags]) + nested


def import_from(which, source, overwrite=False):
    return bytes([9, which, source, int(overwrite)])


def load(which, name, header_only=False):
    return bytes([10 if header_only else 11, which, 1]) + path(name)


def save(which, name):
    return bytes([12, which, 1]) + path(name)


def clear(which):
    return bytes([13, which])


def files(*choice):
    return bytes([14, 0]) + bytes(choice)


def described(text, width, height):
    """A file of one correction without pixels, where there are no other files."""
    return (bytes([14, 0, 5]) + key(text) + b"\0" + struct.pack("<I", width) + b"\0" + struct.pack("<I", height) +
            value("1") + value("100") + bytes([0, 0, 0]))


def anew(which, choice=0):
    return bytes([15, which, 1]) + (bytes([choice]) if which >= 2 else b"")


def check(which):
    return bytes([15, which, 0])


IN_PLACE, INTO, SAME = 0, 1, 2
USE, PROCESSING, OPTION, NO_DELEGATE = 1, 2, 4, 8


def operations():
    two = add(0, "dark", 5, 4, 3) + add(0, "A,1,B,2", 3, 3, 1, "0.5", "1")
    stored = add(2, "A,1,B,2") + add(2, "A,1,B,3", 3, 2) + add(2, "A,2,B,1,x", 1, 1)
    sequences = {
        "scale": two + activate(0, "DARK") + exposure(0, "0.5", "100") + level(0, 57) + region(0, 1, 1, 3, 2) +
        check(0) + apply(0) + apply(0, target=INTO) + apply(0, target=SAME),
        "refused": two + b"".join(add(0, "A,3", refusal=i) for i in range(1, 6)) + add(0, "DARK") + add(0, "") +
        add(0, "A,3", exposure="0") + add(0, "A,3", intensity="-1") + add(0, "A,3", exposure="least", intensity="small"),
        "not_a_number": add(0, "dark", exposure="nan") + activate(0, "dark") + exposure(0, "inf", "nan") + check(0) +
        exposure(0, "large", "large") + check(0),
        "regions": two + activate(0, "dark") + region(0, 4, 3, 1, 1) + region(0, 5, 0, 1, 1) + region(0, 0, 4, 1, 1) +
        region(0, 1, 0, 5, 1) + region(0, 0, 1, 1, 4) + region(0, -1, 0, 1, 1) + region(0, 0, 0, 0, 1) + check(0),
        "wrong_lengths": two + activate(0, "dark") + b"".join(apply(0, lengths=i, target=INTO) for i in range(6)) +
        apply(0, null=True) + apply(0, null=True, flags=USE | NO_DELEGATE),
        "delegate": two + activate(0, "dark") +
        b"".join(apply(0, target=t, flags=USE | f, nested=check(0)) for t in range(3) for f in (0, PROCESSING, OPTION)) +
        activate(0) + apply(0, flags=USE | PROCESSING, nested=level(0, 3)),
        "delegate_changes_the_object": two + activate(0, "dark") + apply(0, flags=USE, nested=region(0, 0, 0, 1, 1)) +
        apply(0, flags=USE, nested=clear(0)) + check(0),
        "delete_in_another_case": two + activate(0, "dark") + delete(0, "dark") + delete(0, "DARK") + check(0),
        "given_keys": two + activate_given(0, 1) + delete_given(0, 1) + delete_given(0, 0) + check(0),
        "save_and_load": two + save(0, "d\\f") + load(1, "d/s") + load(1, "d\\f") + activate(1, "dark") + check(1),
        "header_only": two + save(0, "d\\f") + load(1, "d\\f", True) + activate(1, "dark") + level(1, 3) + check(1) +
        load(1, "gone\\x") + level(1, 3) + check(1) + save(1, "d\\t") + clear(1) + save(1, "d\\t"),
        "import": two + add(1, "DARK", 1, 1) + activate(1, "dark") + import_from(1, 0) + import_from(1, 0, True) +
        check(1) + level(1, 50) + check(1) + import_from(0, 0) + import_from(0, 0, True) + save(0, "t"),
        "long_keys": add(0, LONGEST_KEY) + add(0, CUT_KEY) + activate(0, CUT_KEY) + activate(0, LONGEST_KEY) +
        add(2, CUT_GROUP_KEY) + add(2, CUT_GROUP_KEY) + save(2, "d\\s") + activate(2, CUT_GROUP_KEY),
        "free_key": bytes([0, 0, FREE_TEXT, 3]) + b"a%s" + bytes([0, 1, 1, 0]) + b"\0\0\0\0" + value("1") + value("1"),
        "store": stored + save(2, "d\\s") + activate(2, "A,1,B,2") + check(2) + activate(2, "A,1,B,3") + check(2) +
        activate(2, "A,2,B,1,x") + add(2, "A,1,B,2,y") + activate(2, "A,1,B,3") + save(2, "t") + load(3, "d\\s"),
        "store_header_only": stored + save(2, "d/s") + load(3, "d\\s_A_1_B_2", True) + activate(3, "A,1,B,2") +
        check(3) + save(3, "t") + import_from(3, 2) + clear(3),
        "store_import": stored + save(2, "d\\s") + import_from(3, 2) + import_from(3, 2, True) + import_from(2, 2) +
        import_from(2, 2, True) + two + import_from(3, 0) + import_from(2, 3, True) + import_from(0, 2),
        "store_without_names": anew(2, 5) + add(2, "dark") + save(2, "d\\s") + activate(2, "dark") + check(2),
        "store_of_an_ungrouped_file": two + save(0, "d\\f") + load(2, "d\\f", True) + load(2, "d\\f") +
        activate(2, "dark") + check(2) + save(2, "d\\s"),
        "store_settings": level(2, 30) + exposure(2, "0.5", "100") + region(2, 0, 0, 1, 2) + check(2) +
        apply(2, flags=USE, nested=check(2)) + stored + activate(2, "A,1,B,2") + check(2),
        "store_delegate_switches_group": stored + save(2, "d\\s") + activate(2, "A,1,B,2") +
        apply(2, flags=USE, nested=activate(2, "A,1,B,3")) + check(2),
        "store_delegate_clears": stored + activate(2, "A,1,B,2") + apply(2, flags=USE, nested=clear(2)) + check(2),
        "damaged_files": two + save(0, "d\\f") + files(0, 1, 9) + load(1, "d\\f") + files(0, 2, 70, 0, 9) +
        load(1, "d\\f") + files(0, 4, 7) + load(2, "d\\f") + load(1, "d\\f", True) + files(0, 0) + load(1, "d\\f"),
        "files_behind_a_store": stored + save(2, "d\\s") + files(0, 1, 200) + activate(2, "A,1,B,2") + files(1, 4, 2) +
        activate(2, "A,1,B,3") + files(2, 3) + path("d\\s_A_1") + load(2, "d\\s") + save(2, "d\\t"),
        "high_bytes": add(0, b"gr\xfc\xdf") + add(0, b"gr\xdc\xdf", 1, 3) + activate(0, b"GR\xdc\xdf") +
        delete(0, b"GR\xfc\xdf") + check(0) + add(2, b"A,\xe4,B,\xc4") + add(2, b"A,\xc4,B,\xe4", 3, 1) + save(2, "d\\s") +
        activate(2, b"A,\xe4,B,\xc4") + check(2) + load(3, b"d\\s_A_\xc4_B_\xe4") + activate(3, b"A,\xc4,B,\xe4"),
        "minus_one_wide": described("dark", 0xFFFFFFFF, 1) + load(0, "d\\f", True) + load(0, "gone\\x") +
        activate(0, "dark") + region(0, 0, 0, 1, 1) + check(0) + import_from(2, 0) + activate(2, "dark") +
        load(2, "d\\f", True) + load(2, "d\\f"),
        "minus_one_high": described("A,1,B,2", 1, 0xFFFFFFFF) + load(0, "d\\f", True) + load(0, "gone\\x") +
        activate(0, "A,1,B,2") + import_from(2, 0) + activate(2, "A,1,B,2") + check(2) + save(2, "d\\s"),
        "wrapped_product": described("dark", 0x10000, 0x10000) + load(0, "d\\f", True) + load(0, "gone\\x") +
        activate(0, "dark") + region(0, 0, 0, 2, 2) + check(0) + save(0, "t") + load(0, "d\\f"),
        "narrower_import": add(0, "dark", 4, 4) + activate(0, "dark") + add(1, "DARK", 2, 5) + import_from(0, 1, True) +
        level(0, 50) + check(0) + region(0, 1, 1, 1, 4) + check(0) + add(1, "A,3", 7, 1) + activate(1, "DARK"),
        "wider_import": add(0, "dark", 2, 4) + activate(0, "dark") + region(0, 1, 2, 1, 2) + add(1, "dark", 7, 1) +
        import_from(0, 1, True) + level(0, 50) + check(0),
        "store_imports_itself": stored + activate(2, "A,1,B,2") + import_from(2, 2, True) + import_from(2, 2, True) +
        check(2) + stored + save(2, "d\\s") + activate(2, "A,2,B,1,x") + import_from(2, 2, True) + check(2),
        "null_device": two + save(0, b"/dev/null") + load(0, b"/dev/null") + load(0, b"/dev/null", True) + stored +
        save(2, b"/dev/null") + save(2, "d\\s") + save(2, b"/dev/null") + load(2, b"/dev/null"),
        "anew": two + anew(0) + stored + anew(2, 7) + anew(2, 6) + add(2, "dark") + check(2),
    }
    for name, data in sequences.items():
        put("operations", name, b"\0\0" + data)  # two stores with the names A and B


if __name__ == "__main__":
    calibration_files()
    groupings()
    operations()
