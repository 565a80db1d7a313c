#pragma once

#include <vector>

#include "plugins/descriptor.h"

struct TEdgePixel {
  int x;
  int y;
};

/// The edges of a gray picture, row by row.
///
/// J. Canny, "A Computational Approach to Edge Detection", IEEE Trans. PAMI 8(6), 1986, with the parameters that the
/// authors of "phog" take for granted. Gaussian of sigma sqrt 2 over 13 pixels, edge pixels repeated; central
/// differences, one-sided at the border; the high threshold, relative to the greatest magnitude, is the upper edge of
/// the bin of a histogram of 64 at which more than 0.7 of the pixels are counted, the low one 0.4 times that;
/// suppression along the nearest of four directions, where a pixel stays if it is greater than its neighbor to the
/// left or above and not less than the other; neighbors outside the picture count as 0; hysteresis over all eight
/// neighbors. The magnitudes are of single precision.
std::vector<TEdgePixel> FindEdges(const TPicture& picture);
