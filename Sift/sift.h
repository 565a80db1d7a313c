// VL::Sift: a Gaussian scale space of a gray picture, the keypoints in it, their orientations and descriptors.
//
// The method is that of D. Lowe, "Distinctive Image Features from Scale-Invariant Keypoints", International Journal of
// Computer Vision 60(2), 2004 ("the paper" below; section numbers are its own). The engine departs from it in these
// points, each told again where it happens:
//   - The first octave can be any power of two, not only the doubled picture, and the number of octaves is given.
//   - Refinement moves a candidate to another pixel, never to another level, and looks for an offset above 0.6.
//   - The orientation histogram is smoothed, a keypoint has at most four orientations, and they are returned side by
//     side instead of as further keypoints.
//   - The descriptor stays in floats and its angles run clockwise on the screen, as y points down.
#pragma once

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

#include "Sift/sift-conv.h"

namespace VL {

namespace Detail {

// The largest argument of expn.
inline constexpr float_t expnTableMax = 25.0F;

// e^-x for x from 0 to expnTableMax. Another argument stops the program.
float_t expn(float_t x);

}  // namespace Detail

// Order of use: construct, which builds the scale space; detect; read the keypoints; ask for orientations and
// descriptors. An object is used by one thread. It owns all its arrays, is neither copied nor moved, and keeps no
// reference to the picture after construction.
//
// The scale space has two indices. Octave o, from omin to omin + O - 1, samples the picture with a period of 2^o
// pixels. Level s, from smin to smax, has the nominal scale sigma0 * 2^(o + s / S) in pixels of the picture.
//
// An object has no octaves and no keypoints if its parameters make no sense (see the constructor), and after a picture
// whose work buffer would exceed 2^31 - 1 floats or the memory there is, until BuildPyramid is given a smaller one.
class Sift {
 public:
  struct Keypoint {
    std::int32_t o;   // octave
    std::int32_t ix;  // column in the octave, after refinement
    std::int32_t iy;  // row in the octave, after refinement
    std::int32_t is;  // level
    float_t x;        // column, in pixels of the picture; 0 is the centre of the first
    float_t y;        // row, likewise
    float_t s;        // level, with a fraction
    float_t sigma;    // scale sigma0 * 2^(o + s / S), in pixels of the picture
  };

  static constexpr std::int32_t kMaxOrientations = 4;
  static constexpr std::int32_t kDescriptorLength = 128;

  // Stores the parameters and builds the scale space of `image`, as BuildPyramid does.
  //   sigman      the smoothing that the picture already has, in pixels; above 0
  //   sigma0      the scale of level 0 of octave 0, in pixels; above 0
  //   O, S        the number of octaves and of levels per octave (not counting overlap); at least 1
  //   omin        the first octave, -8 to 16: below 0 the picture is doubled, above 0 it is subsampled
  //   smin, smax  the first and the last level. Keypoints lie on levels smin + 1 to smax - 2
  // No sense make, besides what leaves these ranges: sigmas that are not finite, smin above smax, a last octave above
  // 127 (its period is no float) and scales that need filters of a radius above Detail::kLargestRadius.
  Sift(const float_t* image, std::int32_t width, std::int32_t height, float_t sigman, float_t sigma0, std::int32_t O,
       std::int32_t S, std::int32_t omin, std::int32_t smin, std::int32_t smax);
  ~Sift();
  Sift(const Sift&) = delete;
  Sift& operator=(const Sift&) = delete;

  // Builds the scale space of a picture of `width` x `height` values, row by row without gaps (section 3 of the paper),
  // and empties the keypoints. Values have no unit; thresholds are measured in theirs. A picture without pixels (a size
  // below 1, or no image) has empty octaves. NaN and infinite values spoil the results within reach of the filters.
  // Each level is made from the one before it, and an octave's first level from the level of the octave before that has
  // its scale. If there is none, as smax is below smin + S, the last level is taken and smoothed by what is missing.
  void BuildPyramid(const float_t* image, std::int32_t width, std::int32_t height);

  // Replaces the keypoints by the extrema of the differences of neighbouring levels (sections 3.1 and 4 of the paper),
  // sorted by octave, then by level, row and column of their first detection.
  //   threshold      least absolute value of a difference, interpolated at the extremum
  //   edgeThreshold  largest ratio of the principal curvatures (r in section 4.1)
  // Where the paper starts over at the neighbouring sample when an offset exceeds 0.5 in any dimension, this moves on
  // at 0.6, only in the picture and at most four times, and accepts an offset below 1.5.
  void DetectKeypoints(float_t threshold, float_t edgeThreshold);

  // The keypoints found, to read. They stay where they are until the next BuildPyramid or DetectKeypoints.
  using KeypointIterator = std::vector<Keypoint>::const_iterator;
  [[nodiscard]] KeypointIterator KeypointsBegin() const { return keypoints.begin(); }
  [[nodiscard]] KeypointIterator KeypointsEnd() const { return keypoints.end(); }

  // The size of octave `o` in samples, its period in pixels of the picture, and the first sample of its level `s`,
  // which lies row by row without gaps. An index outside the scale space stops the program.
  [[nodiscard]] std::int32_t GetOctaveWidth(std::int32_t o) const;
  [[nodiscard]] std::int32_t GetOctaveHeight(std::int32_t o) const;
  [[nodiscard]] float_t GetSamplingPeriod(std::int32_t o) const;
  [[nodiscard]] const float_t* GetLevel(std::int32_t o, std::int32_t s) const;

  // Prepares the gradients of octave `o` on the levels that can hold keypoints, unless they are there: magnitude per
  // sample and direction in radians (section 5 of the paper). The two calls below do it by themselves; keypoints that
  // come octave by octave cost it once per octave. An octave outside the scale space stops the program.
  void ComputeGradients(std::int32_t o);

  // Writes the dominant directions of the gradients around `keypoint` to `angles`, which has room for
  // kMaxOrientations, and returns how many there are: 0 to 4 (section 5 of the paper). Angles are in radians, from 0
  // included to 2 pi excluded, from the x axis towards the y axis, in rising order: with more than four peaks above 80%
  // of the highest, the first four count. A keypoint outside its octave or the scale space, on a level without
  // gradients or with a scale too small or too large for its window has none: that writes a line with "!" to the
  // standard error. Samples with a gradient that is not finite are left out.
  std::int32_t ComputeOrientations(float_t* angles, Keypoint keypoint);

  // Fills the kDescriptorLength floats of `descriptor` for `keypoint` turned to `angle`, in radians (section 6 of the
  // paper): 4 x 4 spatial bins of magnification * sigma pixels by 8 directions, element
  // direction + 8 * column + 32 * row. `descriptor` is left as it is where ComputeOrientations would refuse the
  // keypoint, if magnification takes the window out of range, and for an angle that is not finite.
  // The paper's window of half the descriptor width and its clamp at 0.2 are kept.
  void ComputeDescriptor(float_t* descriptor, Keypoint keypoint, float_t angle);

  // A keypoint at a position and of a scale, in pixels of the picture, that did not come from detection. Octave and
  // level are the ones nearest to `sigma`; the position is not checked.
  [[nodiscard]] Keypoint MakeKeypoint(float_t x, float_t y, float_t sigma) const;

  // Scales the range to length 1. A range of zeros stays zero.
  static void Normalize(float_t* begin, float_t* end);

 private:
  float_t sigman;
  float_t sigma0;
  std::int32_t O;
  std::int32_t S;
  std::int32_t omin;
  std::int32_t smin;
  std::int32_t smax;
  std::int32_t width = 0;
  std::int32_t height = 0;
  // O is 0 as long as there are no octaves.
  std::int32_t octavesAskedFor = 0;

 public:
  // The width of a descriptor's spatial bin, in units of the keypoint's scale; above 0.
  float_t magnification = 3.0F;
  // Whether descriptors are scaled to length 1, clamped and scaled again; else the weighted sums stay.
  bool normalizeDescriptors = true;

 private:
  struct Placement;

  [[nodiscard]] bool ParametersAreValid() const;
  bool AllocateBuffers();
  bool AllocateOctaves(std::int64_t area);
  void Reset();

  [[nodiscard]] float_t LevelFactor(std::int32_t s) const;
  [[nodiscard]] float_t StepSigma(std::int32_t s) const;
  float_t* Level(std::int32_t o, std::int32_t s);
  [[nodiscard]] std::int32_t BestLevel() const;
  [[nodiscard]] float_t BaseSigma(std::int32_t o) const;
  void FillOctaves(const float_t* image);
  void MakeChain(std::int32_t o);
  void MakeLevels(std::int32_t o, const float_t* image);
  void FillBase(std::int32_t o, const float_t* image, std::int32_t begin, std::int32_t end);
  void Double(float_t* destination, const float_t* image);

  void FindCandidates(std::int32_t o, float_t threshold);
  float_t* DifferenceRow(std::int32_t w, std::int32_t s, std::int32_t y);
  void FindCandidatesInRow(std::int32_t o, std::int32_t y, float_t threshold);
  bool Refine(std::int32_t o, float_t threshold, float_t edgeThreshold, Keypoint& keypoint) const;

  bool Place(const Keypoint& keypoint, Placement& place) const;
  template <class Visit>
  void VisitWindow(const Placement& place, float_t radius, const Visit& visit) const;

  std::unique_ptr<float_t[]> workBuffer;
  std::int32_t workBufferSize = 0;
  bool workHoldsGradients = false;
  std::int32_t workOctave = 0;
  std::vector<std::unique_ptr<float_t[]>> octaveBuffers;
  std::vector<float_t> filters;
  std::vector<Detail::Convolution> chain;
  std::vector<Keypoint> keypoints;
};

}  // namespace VL
