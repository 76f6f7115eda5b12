#!/usr/bin/env python3
"""Makes tests/audio/data/adpcm.{pcm,out,ima} with the ADPCM coder of Python's audioop.

adpcm.pcm  the blocks to be coded, samples little-endian
adpcm.out  the same blocks as an IMA decoder gives them back, little-endian
adpcm.ima  for each block the state before it (valprev big-endian, index), then
           its codes; at the end the state after the last block

The state is carried from block to block. The blocks have the lengths in BLOCKS;
tests/audio/adpcm_test.cc knows them, too. Needs Python before 3.13.
"""
import audioop
import math
import pathlib
import random
import struct

BLOCKS = (800, 801, 800)
DATA = pathlib.Path(__file__).parent.parent / "tests" / "audio" / "data"


def samples():
    chance = random.Random(1)
    for n in range(sum(BLOCKS)):
        if n < 400:  # a rising tone over noise
            value = 60 * n * math.sin(n * 0.3) * 0.8 + chance.gauss(0, 300)
        elif n < 800:  # full-scale steps
            value = 32767 if n // 50 % 2 else -32768
        elif n < 1600:  # noise from a whisper to clipping
            value = chance.gauss(0, 1.012 ** (n - 800))
        elif n < 2000:  # silence, where the index falls to its end
            value = 0
        else:
            value = 9000 * math.sin(n * 0.05) + 3000 * math.sin(n * 1.7)
        yield max(-32768, min(32767, round(value)))


def pack(values):
    return struct.pack("<%dh" % len(values), *values)


def main():
    whole = list(samples())
    codes, decoded, state, at = b"", b"", (0, 0), 0
    for length in BLOCKS:
        block = whole[at:at + length]
        at += length
        codes += struct.pack(">hB", *state)
        # An odd block: audioop holds the last code back until a second one is there.
        image = bytearray(audioop.lin2adpcm(pack(block + [0] * (length % 2)), 2, state)[0])
        if length % 2:
            image[-1] &= 0xF0
        decoded += audioop.adpcm2lin(bytes(image), 2, state)[0][:2 * length]
        state = audioop.lin2adpcm(pack(block), 2, state)[1]
        codes += image
    DATA.mkdir(parents=True, exist_ok=True)
    (DATA / "adpcm.pcm").write_bytes(pack(whole))
    (DATA / "adpcm.out").write_bytes(decoded)
    (DATA / "adpcm.ima").write_bytes(codes + struct.pack(">hB", *state))


main()
