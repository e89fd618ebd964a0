#pragma once

#include "settings/processingrequest.h"

namespace quillet {

// How far a JPEG is shrunk while it is decoded, given the sizing the batch
// will apply: 2 when every drawn dimension is at most half the picture, else
// 1. The decoder could go on to 1/4 and 1/8, but then each output size would
// want a decode of its own; halved, every output of half the size or less is
// drawn from the one decode, each averaging blocks from it (below), so the
// versions of a file share it and each is still what its batch alone writes.
// A small picture made alone pays for it: a 320-pixel batch of 24 MP JPEGs
// decoded at 1/2 and averaged takes about two fifths longer than one decoded
// at 1/8. `width` x `height` is the picture after
// any quarter-turn rotation. Sizes that keep the picture (copy, down-only
// no-ops) and nearest-neighbour scaling get 1, so their pixels are the
// file's own.
int pipelineShrinkFactor(const Sizing& sizing, int width, int height);

// The whole-number factor by which blocks of pixels may be averaged as rows
// come from the decoder, after the decoder's own shrink by `decoded` (1 for
// anything but JPEG): the largest that still leaves at least twice the drawn
// size in each dimension, so the resampler's filter has room to work, and 1
// wherever pipelineShrinkFactor gives 1 for want of a reduction.
int pipelineBoxShrink(const Sizing& sizing, int width, int height, int decoded);

} // namespace quillet
