// The lines of the tables, in their order.

#include "benchmarks/report.h"

namespace {

const TFigure kPerPixel = {"perPixel", TUnit::kSeconds};
const TFigure kPerPicture = {"perPicture", TUnit::kSeconds};
const TFigure kPerQuery = {"perQuery", TUnit::kSeconds};
const TFigure kChildTime = {"processorTime", TUnit::kSeconds};
const TFigure kAbove = {"above", TUnit::kSeconds};
const TFigure kWallTime = {"wallTime", TUnit::kSeconds};
const TFigure kPeakMemory = {"peakMemory", TUnit::kBytes};
const TFigure kMean = {"mean", TUnit::kNumber};
const TFigure kLargest = {"largest", TUnit::kNumber};
const TFigure kPerLine = {"perLine", TUnit::kSeconds};
const TFigure kMemoryPerLine = {"memoryPerLine", TUnit::kBytes};
const TFigure kExitTime = {"exit", TUnit::kSeconds};
const TFigure kBytesForEachByte = {"bytesForEachByte", TUnit::kNumber};

/// Peers that rank the same 64-bit numbers.
std::vector<TPeer> SearchesOfDoubles(const std::string& arguments) {
  return {{"OpenCV on doubles", "BM_SearchOpenCvDoubles" + arguments},
          {"FLANN on doubles", "BM_SearchFlann" + arguments}};
}

/// Peers that rank 32-bit numbers, and so read half as many bytes.
std::vector<TPeer> SearchesOfFloats(const std::string& arguments) {
  return {{"OpenCV on floats", "BM_SearchOpenCv" + arguments},
          {"FAISS on floats, distances", "BM_SearchFaissDistances" + arguments},
          {"FAISS on floats, flat index", "BM_SearchFaissIndex" + arguments}};
}

}  // namespace

const std::vector<TRow>& Rows() {
  // clang-format off
  static const std::vector<TRow> rows = {
      // Kernels
      {"\"hsv\", 640x480, AVX-512", {"BM_Hsv/AVX-512"}, {{"OpenCV", "BM_HsvOpenCv"}}, 1 / 3.0},
      {"\"hsv\", 640x480, AVX2", {"BM_Hsv/AVX2"}, {{"OpenCV", "BM_HsvOpenCv"}}, 1 / 1.8},
      {"\"hsv\", 640x480, SSE2", {"BM_Hsv/SSE2"}, {{"OpenCV", "BM_HsvOpenCv"}}},
      {"\"hsv\", 640x480", {"BM_Hsv"}, {{"plain loop", "BM_HsvPlainLoop"}}},
      {"\"lbp\", 640x480", {"BM_Lbp"}, {{"OpenCV", "BM_LbpOpenCv"}}, 1 / 3.0},
      {"\"lbp\", 640x480, AVX2", {"BM_Lbp/AVX2"}, {{"OpenCV", "BM_LbpOpenCv"}}},
      {"\"lbp\", 640x480, SSE2", {"BM_Lbp/SSE2"}, {{"OpenCV", "BM_LbpOpenCv"}}},
      {"\"lbp\", 640x480", {"BM_Lbp"}, {{"plain loop", "BM_LbpPlainLoop"}}},
      {"gray plane, 640x480", {"BM_Gray"}, {{"OpenCV", "BM_GrayOpenCv"}}, 1 / 2.0},
      {"gray plane, 640x480, AVX2", {"BM_Gray/AVX2"}, {{"OpenCV", "BM_GrayOpenCv"}}},
      {"gray plane, 640x480, SSE2", {"BM_Gray/SSE2"}, {{"OpenCV", "BM_GrayOpenCv"}}},
      {"gray plane, 640x480", {"BM_Gray"}, {{"plain loop", "BM_GrayPlainLoop"}}},
      // Descriptors
      {"\"edgehistogram\", 640x480", {"BM_DescribeGray/edgehistogram"}, {{"decoding", "BM_DecodeLoadFromFile/640/480"}}, 2},
      {"\"colorlayout\", 640x480", {"BM_DescribeColor/colorlayout"}, {{"decoding", "BM_DecodeLoadFromFile/640/480"}}, 2},
      {"\"correlogram\", 640x480", {"BM_DescribeColor/correlogram"}, {{"decoding", "BM_DecodeLoadFromFile/640/480"}}, 2},
      {"\"phog\", 640x480", {"BM_DescribeGray/phog"}, {{"decoding", "BM_DecodeLoadFromFile/640/480"}}, 2},
      {"\"gist\", 640x480", {"BM_DescribeGray/gist"}, {{"decoding", "BM_DecodeLoadFromFile/640/480"}}, 10},
      {"\"tamura\", 640x480", {"BM_DescribeGray/tamura"}, {{"decoding", "BM_DecodeLoadFromFile/640/480"}}, 2},
      {"\"cedd\", 640x480", {"BM_DescribeColor/cedd"}, {{"decoding", "BM_DecodeLoadFromFile/640/480"}}, 2},
      {"\"moments\", 640x480", {"BM_DescribeColor/moments"}, {{"decoding", "BM_DecodeLoadFromFile/640/480"}}, 2},
      {"\"phog\", 640x480", {"BM_DescribeGray/phog"}, {{"OpenCV, HOG on the same 21 cells", "BM_HogOpenCv/all"}}, 1},
      {"\"phog\", 640x480", {"BM_DescribeGray/phog"}, {{"OpenCV, HOG on the finest 16 cells", "BM_HogOpenCv/finest"}}},
      // Search
      {"`searchimage`, 100,000 vectors of 256", {"BM_Search/100000/1/256"}, SearchesOfDoubles("/100000/1/256"), 1 / 1.5},
      {"`searchimage`, 100,000 vectors of 256", {"BM_Search/100000/1/256"}, {{"plain read", "BM_SearchPlainRead/100000/1/256"}}, 1.5},
      {"`searchimage`, 100,000 vectors of 256", {"BM_Search/100000/1/256"}, SearchesOfFloats("/100000/1/256")},
      {"`searchimage`, 100,000 vectors of 256, AVX2", {"BM_Search/AVX2/100000/1/256"}, SearchesOfDoubles("/100000/1/256")},
      {"`searchimage`, 100,000 vectors of 256, SSE2", {"BM_Search/SSE2/100000/1/256"}, SearchesOfDoubles("/100000/1/256")},
      {"`searchimage`, 100,000 vectors of 512", {"BM_Search/100000/1/512"}, SearchesOfDoubles("/100000/1/512"), 1 / 1.5},
      {"`searchimage`, 100,000 vectors of 512", {"BM_Search/100000/1/512"}, {{"plain read", "BM_SearchPlainRead/100000/1/512"}}, 1.5},
      {"`searchimage`, 100,000 vectors of 512", {"BM_Search/100000/1/512"}, SearchesOfFloats("/100000/1/512")},
      {"`searchimage`, 1,000,000 vectors of 256", {"BM_Search/1000000/1/256"}, SearchesOfDoubles("/1000000/1/256"), 1 / 1.5},
      {"`searchimage`, 1,000,000 vectors of 256", {"BM_Search/1000000/1/256"}, {{"plain read", "BM_SearchPlainRead/1000000/1/256"}}, 1.5},
      {"`searchimage`, 1,000,000 vectors of 256", {"BM_Search/1000000/1/256"}, SearchesOfFloats("/1000000/1/256")},
      {"`searchimage`, 100,000 images, both features", {"BM_Search/100000/2/256"}, {{"plain read", "BM_SearchPlainRead/100000/2/256"}}, 1.3},
      {"Memory of that database for each byte of its vectors", {"BM_Search/100000/2/256"}, {{"the vectors", "", 1}}, 1.1, kBytesForEachByte},
      {"Ranking of 100,000 distances", {"BM_RankSort/100000"}, {{"stable sort", "BM_RankSortPlain/100000"}}, 1 / 3.0},
      {"Ranking of 1,000,000 distances", {"BM_RankSort/1000000"}, {{"stable sort", "BM_RankSortPlain/1000000"}}, 1 / 3.0},
      // Detection
      {"Keypoints, 640x480", {"BM_SiftDetect/640/480"}, {{"OpenCV's `detect`", "BM_SiftDetectOpenCv/640/480"}}, 1 / 1.7},
      {"Keypoints, 1920x1080", {"BM_SiftDetect/1920/1080"}, {{"OpenCV's `detect`", "BM_SiftDetectOpenCv/1920/1080"}}, 1 / 1.7},
      {"Keypoints, 4000x3000", {"BM_SiftDetect/4000/3000"}, {{"OpenCV's `detect`", "BM_SiftDetectOpenCv/4000/3000"}}, 1 / 1.7},
      {"Keypoints, 640x480, AVX2", {"BM_SiftDetect/AVX2/640/480"}, {{"OpenCV's `detect`", "BM_SiftDetectOpenCv/640/480"}}},
      {"Keypoints, 1920x1080, AVX2", {"BM_SiftDetect/AVX2/1920/1080"}, {{"OpenCV's `detect`", "BM_SiftDetectOpenCv/1920/1080"}}},
      {"Keypoints, 4000x3000, AVX2", {"BM_SiftDetect/AVX2/4000/3000"}, {{"OpenCV's `detect`", "BM_SiftDetectOpenCv/4000/3000"}}},
      {"Keypoints, 640x480, SSE2", {"BM_SiftDetect/SSE2/640/480"}, {{"OpenCV's `detect`", "BM_SiftDetectOpenCv/640/480"}}},
      {"Keypoints, 1920x1080, SSE2", {"BM_SiftDetect/SSE2/1920/1080"}, {{"OpenCV's `detect`", "BM_SiftDetectOpenCv/1920/1080"}}},
      {"Keypoints, 4000x3000, SSE2", {"BM_SiftDetect/SSE2/4000/3000"}, {{"OpenCV's `detect`", "BM_SiftDetectOpenCv/4000/3000"}}},
      {"Keypoints, 640x480", {"BM_SiftDetect/640/480"}, {{"OpenCV's `detect` that finds nothing", "BM_SiftDetectOpenCvFindsNothing/640/480"}}},
      {"Keypoints, 1920x1080", {"BM_SiftDetect/1920/1080"}, {{"OpenCV's `detect` that finds nothing", "BM_SiftDetectOpenCvFindsNothing/1920/1080"}}},
      {"Keypoints, 4000x3000", {"BM_SiftDetect/4000/3000"}, {{"OpenCV's `detect` that finds nothing", "BM_SiftDetectOpenCvFindsNothing/4000/3000"}}},
      {"Keypoints from the colors, 640x480", {"BM_SiftDetectFromColors/640/480"}, {{"OpenCV's `detect`", "BM_SiftDetectOpenCv/640/480"}}},
      {"Keypoints from the colors, 1920x1080", {"BM_SiftDetectFromColors/1920/1080"}, {{"OpenCV's `detect`", "BM_SiftDetectOpenCv/1920/1080"}}},
      {"Keypoints from the colors, 4000x3000", {"BM_SiftDetectFromColors/4000/3000"}, {{"OpenCV's `detect`", "BM_SiftDetectOpenCv/4000/3000"}}},
      {"Scale space, 640x480", {"BM_SiftPyramid/640/480"}, {{"OpenCV's blurs", "BM_SiftPyramidOpenCv/640/480"}}, 1},
      {"Scale space, 1920x1080", {"BM_SiftPyramid/1920/1080"}, {{"OpenCV's blurs", "BM_SiftPyramidOpenCv/1920/1080"}}, 1},
      {"Scale space, 4000x3000", {"BM_SiftPyramid/4000/3000"}, {{"OpenCV's blurs", "BM_SiftPyramidOpenCv/4000/3000"}}, 1},
      {"Scale space, a pixel of the dearest of the three sizes", {"BM_SiftPyramid/640/480", "BM_SiftPyramid/1920/1080", "BM_SiftPyramid/4000/3000"}, {{"640x480", "BM_SiftPyramid/640/480"}, {"1920x1080", "BM_SiftPyramid/1920/1080"}, {"4000x3000", "BM_SiftPyramid/4000/3000"}}, 1.3, kPerPixel},
      {"OpenCV's blurs, a pixel of the dearest of the three sizes: what the caches make of it", {"BM_SiftPyramidOpenCv/640/480", "BM_SiftPyramidOpenCv/1920/1080", "BM_SiftPyramidOpenCv/4000/3000"}, {{"640x480", "BM_SiftPyramidOpenCv/640/480"}, {"1920x1080", "BM_SiftPyramidOpenCv/1920/1080"}, {"4000x3000", "BM_SiftPyramidOpenCv/4000/3000"}}, 0, kPerPixel},
      // Classifiers
      {"\"nearest\", a query over 10,000 histograms of 256", {"BM_NearestHistograms"}, {{"OpenCV", "BM_NearestHistogramsOpenCv"}, {"FAISS", "BM_NearestHistogramsFaiss"}}, 0.12, kPerQuery},
      {"\"nearest\", a query over 10,000 random rows of 256", {"BM_Nearest/10000"}, {{"OpenCV", "BM_NearestOpenCv/10000"}, {"FAISS", "BM_NearestFaiss/10000"}}, 0.4},
      {"\"nearest\", a query over 20,000 random rows of 256", {"BM_Nearest/20000"}, {{"OpenCV", "BM_NearestOpenCv/20000"}, {"FAISS", "BM_NearestFaiss/20000"}}, 0.4},
      {"\"nearest\", a query over 20,000 random rows of 256", {"BM_Nearest/20000"}, {{"plain read", "BM_NearestPlainRead/20000"}}},
      {"\"nearest\", the first question to 10,000 histograms of 256", {"BM_NearestFirstQuestion"}, {{"a comparison with all of them", "BM_NearestCompareAll"}}},
      {"\"nearest\", memory of the compact form for each byte of 10,000 histograms", {"BM_NearestFirstQuestion"}, {{"the histograms", "", 1}}, 0.35, kBytesForEachByte},
      {"`findvisualconceptlocations` \"svm\", 640 rows of 256", {"BM_SvmLocate/256"}, {{"`svm_predict`", "BM_SvmLocateLibraryAlone/256"}}, 0.25},
      {"`findvisualconceptlocations` \"svm\", 640 rows of 512", {"BM_SvmLocate/512"}, {{"`svm_predict`", "BM_SvmLocateLibraryAlone/512"}}, 0.25},
      {"`findvisualconceptlocations` \"neural\", 640 rows of 256", {"BM_NeuralLocate"}, {{"`fann_run`", "BM_NeuralLocateLibraryAlone"}}, 1.05},
      {"`findvisualconceptlocations` \"nearest\", 1,000 images of 64 segments, both features", {"BM_LocateMany/nearest"}, {{"classifying alone", "BM_LocateManyClassifyAlone/nearest"}}},
      {"`findvisualconceptlocations` \"neural\", 1,000 images of 64 segments, both features", {"BM_LocateMany/neural"}, {{"classifying alone", "BM_LocateManyClassifyAlone/neural"}}},
      {"`findvisualconceptlocations` \"svm\", 1,000 images of 64 segments, both features", {"BM_LocateMany/svm"}, {{"classifying alone", "BM_LocateManyClassifyAlone/svm"}}},
      {"Gathering those vectors", {"BM_Gather"}, {{"plain copy", "BM_GatherPlainCopy"}}, 1},
      {"`learnvisualconcept` \"svm\", 1,280 rows of 256", {"BM_SvmLearn/256"}, {{"`svm_train` and a copy", "BM_SvmLearnLibraryAlone/256"}}, 1.05},
      {"`learnvisualconcept` \"svm\", 1,280 rows of 512", {"BM_SvmLearn/512"}, {{"`svm_train` and a copy", "BM_SvmLearnLibraryAlone/512"}}, 1.05},
      // Pictures
      {"`LoadFromFile`, 640x480", {"BM_DecodeLoadFromFile/640/480"}, {{"libjpeg-turbo", "BM_DecodeJpegTurbo/640/480"}}, 1.5},
      {"`LoadFromFile`, 4000x3000", {"BM_DecodeLoadFromFile/4000/3000"}, {{"libjpeg-turbo", "BM_DecodeJpegTurbo/4000/3000"}}, 1.5},
      {"`LoadFromFile`, 640x480", {"BM_DecodeLoadFromFile/640/480"}, {{"OpenCV", "BM_DecodeOpenCvAlone/file/640/480"}, {"OpenCV, from memory", "BM_DecodeOpenCvAlone/memory/640/480"}}, 1 / 1.4, kPerPicture},
      {"`LoadFromFile`, 640x480", {"BM_DecodeLoadFromFile/640/480"}, {{"OpenCV with our allocator's setting", "BM_DecodeOpenCv/640/480"}}},
      {"`LoadFromFile`, 4000x3000", {"BM_DecodeLoadFromFile/4000/3000"}, {{"OpenCV", "BM_DecodeOpenCvAlone/file/4000/3000"}, {"OpenCV, from memory", "BM_DecodeOpenCvAlone/memory/4000/3000"}}, 1 / 1.4, kPerPicture},
      {"`LoadFromFile`, 4000x3000", {"BM_DecodeLoadFromFile/4000/3000"}, {{"OpenCV with our allocator's setting", "BM_DecodeOpenCv/4000/3000"}}},
      {"`LoadFromFile`, 640x480", {"BM_DecodeLoadFromFile/640/480"}, {{"FreeImage alone", "BM_DecodeLibraryAlone/640/480"}}, 1.15},
      {"`LoadFromFile`, 4000x3000", {"BM_DecodeLoadFromFile/4000/3000"}, {{"FreeImage alone", "BM_DecodeLibraryAlone/4000/3000"}}, 1.15},
      {"`updatefeature` \"hsv\", 200 photographs of 640x480", {"BM_UpdateFeature/hsv"}, {{"decoding", "BM_PhotosDecodeAlone"}}, 1.35},
      {"`updatefeature` \"lbp\", 200 photographs of 640x480", {"BM_UpdateFeature/lbp"}, {{"decoding", "BM_PhotosDecodeAlone"}}, 1.25},
      {"`updatefeature` \"hsv\" with 64 segments each, 200 photographs of 640x480", {"BM_UpdateFeatureGrid/hsv"}, {{"without segments", "BM_UpdateFeature/hsv"}}, 1.5},
      {"`updatefeature` \"lbp\" with 64 segments each, 200 photographs of 640x480", {"BM_UpdateFeatureGrid/lbp"}, {{"without segments", "BM_UpdateFeature/lbp"}}, 1.5},
      {"`segmentimage` \"grid\", 200 photographs of 640x480", {"BM_SegmentGrid"}, {{"decoding", "BM_PhotosDecodeAlone"}}},
      {"`segmentimage` \"sift\", 200 photographs of 640x480", {"BM_SegmentSift"}, {{"decoding and detecting", "BM_SegmentSiftDetectAlone"}}, 1.15},
      {"`displayindex`, 16 photographs of 4000x3000", {"BM_DisplayIndex"}, {{"tiles of whole pictures", "BM_DisplayFullDecoding/16/160"}}, 0.3},
      {"16 photographs of 4000x3000, libjpeg-turbo alone at a quarter", {"BM_DisplayIndexJpegTurbo/4"}, {{"tiles of whole pictures", "BM_DisplayFullDecoding/16/160"}}},
      {"16 photographs of 4000x3000, libjpeg-turbo alone at an eighth", {"BM_DisplayIndexJpegTurbo/8"}, {{"tiles of whole pictures", "BM_DisplayFullDecoding/16/160"}}},
      {"`displayindexmap`, 40 photographs of 4000x3000", {"BM_DisplayIndexMap"}, {{"tiles of whole pictures", "BM_DisplayFullDecoding/40/120"}}, 0.3},
      {"Tiles of 160 of 4000x3000, mean difference in gray levels", {"BM_TileDifference/160"}, {{"limit", "", 1}}, 1, kMean},
      {"Tiles of 160 of 4000x3000, largest difference in gray levels", {"BM_TileDifference/160"}, {{"limit", "", 16}}, 1, kLargest},
      {"Tiles of 120 of 4000x3000, mean difference in gray levels", {"BM_TileDifference/120"}, {{"limit", "", 1}}, 1, kMean},
      {"Tiles of 120 of 4000x3000, largest difference in gray levels", {"BM_TileDifference/120"}, {{"limit", "", 16}}, 1, kLargest},
      {"Tile of 4000x3000", {"BM_Tile"}, {{"`QImage`, RGB32", "BM_TileQt/RGB32"}, {"`QImage`, RGB888", "BM_TileQt/RGB888"}}, 1},
      {"Tile of 4000x3000", {"BM_Tile"}, {{"OpenCV, areas", "BM_TileOpenCv"}}},
      {"Tile of 4000x3000", {"BM_Tile"}, {{"FreeImage, cubic", "BM_TileFreeImage"}}},
      // The program
      {"Start to window and end, processor time", {"BM_Start/workbench"}, {{"bare window, linked alike", "BM_Start/bare"}}, 0, kChildTime},
      {"Start to window and end, by the clock", {"BM_Start/workbench"}, {{"bare window, linked alike", "BM_Start/bare"}}, 0, kWallTime},
      {"Start to window, peak memory", {"BM_Start/workbench"}, {{"bare window, linked alike", "BM_Start/bare"}}, 0, kPeakMemory},
      {"Start to window and end, processor time above a bare window of the toolkit", {"BM_StartAboveToolkit"}, {{"limit", "", 0.045}}, 1, kAbove},
      {"Start to window and end, processor time", {"BM_Start/workbench"}, {{"bare window, the toolkit alone", "BM_Start/toolkit"}}, 0, kChildTime},
      {"Start to window and end, by the clock", {"BM_Start/workbench"}, {{"bare window, the toolkit alone", "BM_Start/toolkit"}}, 0, kWallTime},
      {"Start to window, peak memory", {"BM_Start/workbench"}, {{"bare window, the toolkit alone", "BM_Start/toolkit"}}, 2, kPeakMemory},
      {"A line in the window while 20 pictures of 4000x3000 are variables", {"BM_LineBesideLargePictures"}, {{"limit", "", 0.005}}, 1},
      {"A script of 5,000 lines that makes 2,500 variables, each line", {"BM_Variables/2500"}, {{"half of it", "BM_Variables/1250"}}, 1.2, kPerLine},
      {"A script of 10,000 lines that makes 5,000 variables, each line", {"BM_Variables/5000"}, {{"half of it", "BM_Variables/2500"}}, 1.2, kPerLine},
      {"Memory of that script, each line", {"BM_Variables/5000"}, {{"half of it", "BM_Variables/2500"}}, 1.2, kMemoryPerLine},
      {"Exit behind it, by the clock", {"BM_Variables/5000"}, {{"limit", "", 1.0}}, 1, kExitTime},
      // Names and files
      {"`loaddatabase`, 1,000,000 names", {"BM_LoadDatabase/1000000"}, {{"list and sort", "BM_LoadDatabaseListAndSortAlone/1000000"}}, 1.3},
      {"`loaddatabase`, 100,000 names", {"BM_LoadDatabase/100000"}, {{"list and sort", "BM_LoadDatabaseListAndSortAlone/100000"}}, 1.5},
      {"`savefeature`, 100,000 vectors, first time", {"BM_SaveFeatureFirst"}, {{"plain loop", "BM_SaveFeatureFirstPlainLoop"}}},
      {"`savefeature`, 100,000 vectors, first time", {"BM_SaveFeatureFirst"}, {{"plain loop that writes beside and renames", "BM_SaveFeatureFirstPlainLoopBeside"}}, 1.2},
      {"`savefeature`, again", {"BM_SaveFeatureAgain"}, {{"plain loop that overwrites", "BM_SaveFeatureAgainPlainLoop"}}},
      {"`savefeature`, again", {"BM_SaveFeatureAgain"}, {{"plain loop that writes beside and renames", "BM_SaveFeatureAgainPlainLoopBeside"}}, 1.2},
      {"`loadfeature`, 100,000 vectors", {"BM_LoadFeature"}, {{"plain loop into one buffer", "BM_LoadFeaturePlainLoop"}}},
      {"`loadfeature`, 100,000 vectors", {"BM_LoadFeature"}, {{"plain loop that keeps them, with `processEvents`", "BM_LoadFeaturePlainLoopLikewise"}}, 1.2},
      {"100,000 times `processEvents`", {"BM_LoadFeatureProcessEventsAlone"}, {{"`loadfeature`", "BM_LoadFeature"}}, 0.5},
      {"`loadmirflickrtags`, 25,000 numbers", {"BM_LoadTags"}, {{"limit", "", 0.010}}, 1},
      {"`MeasureRanking` and writing, 1,000,000 ranks", {"BM_MeasureAndWrite"}, {{"writing", "BM_MeasureAndWriteWriteAlone"}}, 3},
      // Experiments
      {"An experiment's distances, a query of 41 over 100,000 vectors of 256", {"BM_ExperimentDistances"}, {{"`searchimage`'s", "BM_ExperimentSearchDistances"}}, 0.5, kPerQuery},
      {"A topic's ranking and measures, 100,000 distances", {"BM_ExperimentRank"}, {{"the sort", "BM_ExperimentSortAlone"}}, 1.3},
      {"Extraction, 1,000 photographs of 640x480, \"hsv\" and \"lbp\"", {"BM_ExperimentExtract"}, {{"decoding", "BM_ExperimentDecodeAlone"}}, 1.35},
  };
  // clang-format on
  return rows;
}

const std::vector<TGrowthRow>& GrowthRows() {
  static const std::vector<TGrowthRow> rows = {
      {"`updatefeature` \"hsv\", 64x48", "BM_GrowthUpdateFeature"},
      {"`searchimage`, vectors of 256", "BM_GrowthSearchImage"},
      {"`loaddatabase`", "BM_GrowthLoadDatabase"},
      {"`loadfeature`", "BM_GrowthLoadFeature"},
      {"`learnvisualconcept` \"nearest\"", "BM_GrowthLearn/nearest"},
      {"`learnvisualconcept` \"svm\"", "BM_GrowthLearn/svm"},
      {"`svm_train` alone on the same rows", "BM_GrowthLearnSvmLibraryAlone"},
  };
  return rows;
}
