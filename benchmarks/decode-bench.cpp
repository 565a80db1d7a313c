// LoadFromFile beside other decoders of the same file, each into fresh memory, and the tile of a large picture beside
// what other libraries make of it.

#include <cstdio>
#include <memory>
#include <string>

#include <QImage>
#include <FreeImage.h>
#include <benchmark/benchmark.h>
#include <jpeglib.h>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "benchmarks/bench-data.h"
#include "images/image-rgb.h"

namespace {

std::string File(const benchmark::State& state) {
  return PictureDirectory(1, static_cast<int>(state.range(0)), static_cast<int>(state.range(1))) + "/im1.jpg";
}

void BM_DecodeLibraryAlone(benchmark::State& state) {
  const std::string file = File(state);
  for (auto _ : state) {
    FIBITMAP* bitmap = FreeImage_Load(FIF_JPEG, file.c_str(), 0);
    benchmark::DoNotOptimize(FreeImage_GetBits(bitmap));
    FreeImage_Unload(bitmap);
  }
}

void BM_DecodeLoadFromFile(benchmark::State& state) {
  const std::string file = File(state);
  for (auto _ : state) {
    TImageRGB picture;
    picture.LoadFromFile(file);
    benchmark::DoNotOptimize(picture.GetPixels());
  }
  state.counters["perPicture"] =
      benchmark::Counter(1, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

/// The fast transform is also what LoadFromFile's library uses. `divisor` is 1 for the whole picture.
void DecodeWithJpegTurbo(const std::string& name, unsigned divisor) {
  std::FILE* file = std::fopen(name.c_str(), "rb");
  jpeg_error_mgr errors;
  jpeg_decompress_struct decoder;
  decoder.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&decoder);
  jpeg_stdio_src(&decoder, file);
  jpeg_read_header(&decoder, TRUE);
  decoder.out_color_space = JCS_RGB;
  decoder.dct_method = JDCT_IFAST;
  decoder.scale_num = 1;
  decoder.scale_denom = divisor;
  jpeg_start_decompress(&decoder);
  const std::size_t stride = std::size_t{decoder.output_width} * 3;
  const auto pixels = std::make_unique_for_overwrite<unsigned char[]>(stride * decoder.output_height);
  while (decoder.output_scanline < decoder.output_height) {
    JSAMPROW row = pixels.get() + stride * decoder.output_scanline;
    jpeg_read_scanlines(&decoder, &row, 1);
  }
  jpeg_finish_decompress(&decoder);
  jpeg_destroy_decompress(&decoder);
  std::fclose(file);
  benchmark::DoNotOptimize(pixels.get());
}

void BM_DecodeJpegTurbo(benchmark::State& state) {
  const std::string name = File(state);
  for (auto _ : state) {
    DecodeWithJpegTurbo(name, 1);
  }
}

/// The part of displayindex over 16 photographs that no program around the decoder can save: decoding them at a part of
/// their size, which at an eighth is little more than reading all bits.
void BM_DisplayIndexJpegTurbo(benchmark::State& state) {
  const std::string location = EnlargedSampleDirectory(1, 110);
  for (auto _ : state) {
    for (int i = 1; i <= 16; ++i) {
      DecodeWithJpegTurbo(location + "/im" + std::to_string(i) + ".jpg", static_cast<unsigned>(state.range(0)));
    }
  }
}

void BM_DecodeOpenCv(benchmark::State& state) {
  cv::setNumThreads(1);
  const std::string file = File(state);
  for (auto _ : state) {
    benchmark::DoNotOptimize(cv::imread(file).data);
  }
}

/// In a program of its own, as whoever installs it has it: without the freed memory that our programs keep.
void BM_DecodeOpenCvAlone(benchmark::State& state, const char* source) {
  const std::string command = DECODE_OPENCV " " + Quoted(File(state)) + " " + source;
  double sum = 0.0;
  for (auto _ : state) {
    std::FILE* output = popen(command.c_str(), "r");
    double seconds = 0.0;
    if (output == nullptr || std::fscanf(output, "%lf", &seconds) != 1) {
      state.SkipWithError("OpenCV decodes nothing.");
    }
    if (output != nullptr) {
      pclose(output);
    }
    state.SetIterationTime(seconds);
    sum += seconds;
  }
  state.counters["perPicture"] = benchmark::Counter(sum, benchmark::Counter::kAvgIterations);
}

const TImageRGB& LargePicture() {
  return Mosaic(4000, 3000);
}

void BM_Tile(benchmark::State& state) {
  for (auto _ : state) {
    TImageRGB tile;
    LargePicture().ScaleTo(tile, 160, 120);
    benchmark::DoNotOptimize(tile.GetPixels());
  }
}

void BM_TileQt(benchmark::State& state, QImage::Format format) {
  const TImageRGB& picture = LargePicture();
  const QImage large =
      QImage(picture.GetPixels(), picture.GetWidth(), picture.GetHeight(), picture.GetStride(), QImage::Format_RGB888)
          .convertToFormat(format);
  for (auto _ : state) {
    const QImage tile = large.scaled(160, 120, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    benchmark::DoNotOptimize(tile.constBits());
  }
}

void BM_TileOpenCv(benchmark::State& state) {
  cv::setNumThreads(1);
  const TImageRGB& picture = LargePicture();
  const cv::Mat large(picture.GetHeight(), picture.GetWidth(), CV_8UC3, const_cast<unsigned char*>(picture.GetPixels()),
                      static_cast<std::size_t>(picture.GetStride()));
  for (auto _ : state) {
    cv::Mat tile;
    cv::resize(large, tile, {160, 120}, 0, 0, cv::INTER_AREA);
    benchmark::DoNotOptimize(tile.data);
  }
}

void BM_TileFreeImage(benchmark::State& state) {
  FIBITMAP* large = FreeImage_Load(FIF_JPEG, (PictureDirectory(1, 4000, 3000) + "/im1.jpg").c_str(), 0);
  for (auto _ : state) {
    FIBITMAP* tile = FreeImage_Rescale(large, 160, 120, FILTER_BICUBIC);
    benchmark::DoNotOptimize(FreeImage_GetBits(tile));
    FreeImage_Unload(tile);
  }
  FreeImage_Unload(large);
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Args({640, 480})->Args({4000, 3000})->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_DecodeLibraryAlone)->Apply(Sizes);
BENCHMARK(BM_DecodeLoadFromFile)->Apply(Sizes);
BENCHMARK(BM_DecodeJpegTurbo)->Apply(Sizes);
BENCHMARK(BM_DisplayIndexJpegTurbo)->Arg(4)->Arg(8)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_DecodeOpenCv)->Apply(Sizes);
BENCHMARK_CAPTURE(BM_DecodeOpenCvAlone, file, "file")->Apply(Sizes)->UseManualTime()->Iterations(1);
BENCHMARK_CAPTURE(BM_DecodeOpenCvAlone, memory, "memory")->Apply(Sizes)->UseManualTime()->Iterations(1);
BENCHMARK(BM_Tile)->Unit(benchmark::kMillisecond);
// Qt scales in several threads, whatever the number of processors.
BENCHMARK_CAPTURE(BM_TileQt, RGB32, QImage::Format_RGB32)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_TileQt, RGB888, QImage::Format_RGB888)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TileOpenCv)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TileFreeImage)->Unit(benchmark::kMillisecond);

}  // namespace
