"""Images as other programs write them, for the tests of the workbench's formats."""
import struct
import subprocess
import warnings
import zlib
from pathlib import Path

import numpy as np
import tifffile
from astropy.io import fits

warnings.simplefilter("error")  # what a library doubts in a file of the workbench fails the test


def run(*command, **how):
    subprocess.run([str(part) for part in command], check=True, capture_output=True, **how)


def plain_tiff(path, pages, **how):
    tifffile.imwrite(path, np.array(pages), photometric="minisblack", **how)


def by_tiffcp(*options):
    def write(path, pages):
        source = path.with_name(path.name + ".source.tif")
        plain_tiff(source, pages)
        run("tiffcp", *options, source, path)
        source.unlink()
    return write


def by_convert(*options, kind):
    """ImageMagick, of the first page alone where the format has no more."""
    def write(path, pages):
        source = path.with_name(path.name + ".source.tif")
        plain_tiff(source, pages[:1] if not kind.startswith("TIFF") else pages)
        run("convert", source, "-depth", 16, *options, f"{kind}:{path}")
        source.unlink()
    return write


def by_raw2tiff(path, pages):
    """libtiff's own maker of TIFF files, of the first page."""
    height, width = pages[0].shape
    source = path.with_name(path.name + ".source.raw")
    pages[0].astype("<u2").tofile(source)
    run("raw2tiff", "-w", width, "-l", height, "-d", "short", "-p", "minisblack", source, path)
    source.unlink()


def raw_by_convert(path, pages):
    run("convert", "-size", "x".join(map(str, pages[0].shape[::-1])), "-depth", 16, "-endian", "MSB",
        "GRAY:-", "-depth", 16, "-endian", "LSB", f"GRAY:{path}", input=pages[0].astype(">u2").tobytes())


def by_tifffile(**how):
    return lambda path, pages: plain_tiff(path, pages, **how)


def image_j(path, pages):
    tifffile.imwrite(path, np.array(pages), imagej=True)


def image_j_large(path, pages):
    """One header for all frames, as ImageJ does above 4 GB: the first frame as tifffile writes it, the rest behind it."""
    big = ">"  # the order that ImageJ writes
    description = f"ImageJ=1.53t\nimages={len(pages)}\nslices={len(pages)}\nunit=micron\nloop=false\n".encode() + b"\0"
    height, width = pages[0].shape
    entries = [(256, 4, 1, width), (257, 4, 1, height), (258, 3, 1, 16 << 16), (259, 3, 1, 1 << 16),
               (262, 3, 1, 1 << 16), (270, 2, len(description), 0), (273, 4, 1, 0), (277, 3, 1, 1 << 16),
               (278, 3, 1, height << 16), (279, 4, 1, width * height * 2)]
    text_at = 8 + 2 + 12 * len(entries) + 4
    pixels_at = text_at + len(description)
    out = b"MM\0*" + struct.pack(big + "I", 8) + struct.pack(big + "H", len(entries))
    for tag, kind, count, value in entries:
        out += struct.pack(big + "HHII", tag, kind, count, {270: text_at, 273: pixels_at}.get(tag, value))
    out += struct.pack(big + "I", 0) + description
    Path(path).write_bytes(out + np.array(pages).astype(">u2").tobytes())


def fits_cube(path, pages):
    fits.PrimaryHDU(np.array(pages)).writeto(path)


def fits_extensions(path, pages):
    units = [fits.PrimaryHDU(pages[0])] + [fits.ImageHDU(page) for page in pages[1:]]
    table = fits.BinTableHDU.from_columns([fits.Column("A", "J", array=np.arange(5))])
    fits.HDUList(units[:1] + [table] + units[1:]).writeto(path)


def fits_signed(path, pages):
    fits.HDUList([fits.PrimaryHDU((page >> 1).astype(np.int16)) if number == 0
                  else fits.ImageHDU((page >> 1).astype(np.int16)) for number, page in enumerate(pages)]).writeto(path)


def fits_tiles(**how):
    def write(path, pages):
        fits.HDUList([fits.PrimaryHDU()] + [fits.CompImageHDU(page, **how) for page in pages]).writeto(path)
    return write


def by_fpack(*options, write=fits_cube):
    """fpack's own file of what `write` makes."""
    def packed(path, pages):
        source = path.with_name(path.name + ".source.fits")
        write(source, pages)
        run("fpack", *options, "-O", path, source)
        source.unlink(missing_ok=True)
    return packed


def ser_bytes(pages, flag=0, order="<", depth=16, color=0, frames=None, times=()):
    height, width = pages[0].shape
    header = b"LUCAM-RECORDER" + struct.pack("<7i", 0, color, flag, width, height, depth,
                                             len(pages) if frames is None else frames)
    header += b"An observer".ljust(40, b"\0") + b"A camera".ljust(40, b" ") + b"A telescope".ljust(40, b"\0")
    header += struct.pack("<qq", 638000000000000000, 638000000000000000)
    return header + np.array(pages).astype(order + "u2").tobytes() + struct.pack(f"<{len(times)}q", *times)


def ser(**how):
    return lambda path, pages: path.write_bytes(ser_bytes(pages, **how))


def pgm_by_netpbm(*filters):
    def write(path, pages):
        data = b""
        for page in pages:
            height, width = page.shape
            raw = subprocess.run(["rawtopgm", "-bpp", "2", str(width), str(height)], input=page.astype(">u2").tobytes(),
                                 capture_output=True, check=True).stdout
            for program in filters:
                raw = subprocess.run([program], input=raw, capture_output=True, check=True).stdout
            data += raw
        path.write_bytes(data)
    return write


def gray_profile():
    """A small ICC profile, version 2: gray values that are proportional to the light."""
    white = struct.pack(">3i", 0xF6D6, 0x10000, 0xD32D)  # D50, in 65536ths
    tags = {b"desc": b"desc" + bytes(4) + struct.pack(">I", 5) + b"gray\0" + bytes(78), b"wtpt": b"XYZ " + bytes(4) + white,
            b"cprt": b"text" + bytes(4) + b"none\0", b"kTRC": b"curv" + bytes(4) + struct.pack(">IH", 1, 256)}
    table, data, at = b"", b"", 128 + 4 + 12 * len(tags)
    for name, content in tags.items():
        table += name + struct.pack(">II", at + len(data), len(content))
        data += content + bytes(-len(content) % 4)
    header = struct.pack(">I4xI4s4s4s6H4s28x", at + len(data), 0x02400000, b"mntr", b"GRAY", b"XYZ ", 2026, 1, 2, 3, 4, 5,
                         b"acsp") + white
    return header.ljust(128, b"\0") + struct.pack(">I", len(tags)) + table + data


def chunk(kind, data):
    """A chunk of a PNG file."""
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def first(pages):
    return pages[:1]


def every(pages):
    return pages


def upside_down(pages):
    return [pages[0][::-1]]


def halved(pages):
    return [page >> 1 for page in pages]


# name: (how it is written, which of the pages it holds then)
WRITERS = {
    "tifffile.tif": (by_tifffile(), every),
    "strips.tif": (by_tifffile(rowsperstrip=5), every),
    "big-endian.tif": (by_tifffile(byteorder=">"), every),
    "big-endian-strips.tif": (by_tifffile(byteorder=">", rowsperstrip=5), every),
    "bigtiff.tif": (by_tifffile(bigtiff=True), every),
    "bigtiff-big-endian-strips.tif": (by_tifffile(bigtiff=True, byteorder=">", rowsperstrip=5), every),
    "deflate-strips.tif": (by_tifffile(rowsperstrip=5, compression="deflate"), every),
    "big-endian-tiles-deflate.tif": (by_tifffile(byteorder=">", tile=(32, 16), compression="deflate"), every),
    "tiles.tif": (by_tifffile(tile=(16, 32)), every),
    "deflate-tiles-predictor.tif": (by_tifffile(tile=(16, 16), compression="deflate", predictor=True), every),
    "image-j.tif": (image_j, every),
    "image-j-large.tif": (image_j_large, every),
    "tiffcp-lzw.tif": (by_tiffcp("-c", "lzw:2", "-r", "7"), every),
    "tiffcp-zip-big-endian.tif": (by_tiffcp("-B", "-c", "zip:2"), every),
    "tiffcp-packbits.tif": (by_tiffcp("-c", "packbits"), every),
    "tiffcp-bigtiff-tiles.tif": (by_tiffcp("-8", "-t", "-w", "32", "-l", "16"), every),
    "tiffcp-lzw-tiles-big-endian.tif": (by_tiffcp("-B", "-c", "lzw:2", "-t", "-w", "16", "-l", "16"), every),
    "raw2tiff.tif": (by_raw2tiff, first),
    "tiffcp-lsb-bits.tif": (by_tiffcp("-f", "lsb2msb"), every),
    "convert-lzw.tif": (by_convert("-compress", "LZW", kind="TIFF"), every),
    "convert-big-endian.tif": (by_convert("-compress", "None", "-endian", "MSB", kind="TIFF"), every),
    "convert-zip.tif": (by_convert("-compress", "Zip", kind="TIFF"), every),
    "convert-bigtiff.tif": (by_convert("-compress", "None", kind="TIFF64"), every),
    "convert-tiles.tif": (by_convert("-compress", "LZW", "-define", "tiff:tile-geometry=16x16", kind="TIFF"), every),
    "convert.png": (by_convert(kind="PNG"), first),
    "convert-interlaced.png": (by_convert("-interlace", "PNG", kind="PNG"), first),
    "convert.pgm": (by_convert(kind="PGM"), first),
    "convert-text.pgm": (by_convert("-compress", "none", kind="PGM"), first),
    "convert.fits": (by_convert(kind="FITS"), upside_down),  # it turns rows round, as FITS viewers do
    "netpbm.pgm": (pgm_by_netpbm(), every),
    "netpbm-text.pgm": (lambda path, pages: pgm_by_netpbm("pnmtoplainpnm")(path, pages[:1]), first),
    "netpbm.png": (lambda path, pages: pgm_by_netpbm("pnmtopng")(path, pages[:1]), first),
    "cube.fits": (fits_cube, every),
    "extensions.fits": (fits_extensions, every),
    "signed.fits": (fits_signed, halved),
    "rice.fits": (fits_tiles(compression_type="RICE_1"), every),
    "rice-tiles.fits": (fits_tiles(compression_type="RICE_1", tile_size=(16, 7)), every),
    "gzip.fits": (fits_tiles(compression_type="GZIP_1"), every),
    "gzip-2.fits": (fits_tiles(compression_type="GZIP_2"), every),
    "fpack.fits.fz": (by_fpack(), every),
    "fpack-rice.fits.fz": (by_fpack("-r", write=fits_extensions), every),
    "fpack-gzip.fits.fz": (by_fpack("-g", write=fits_extensions), every),
    "fpack-gzip-2-tables.fits.fz": (by_fpack("-g2", "-table", write=fits_extensions), every),
    "fpack-one-tile.fits.fz": (by_fpack("-w", write=fits_extensions), every),
    "fpack-signed.fits.fz": (by_fpack("-t", "16,7", write=fits_signed), halved),
    "little-endian.ser": (ser(flag=0, order="<"), every),
    "big-endian.ser": (ser(flag=1, order=">"), every),
}
