#include "benchmarks/bench-data.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <utility>

#include <malloc.h>

#include "images/var-database.h"
#include "images/var-image.h"

namespace filesystem = std::filesystem;

namespace {

filesystem::path BenchDirectory() {
  return filesystem::temp_directory_path() / "tessimar-bench";
}

std::string SamplePhoto(int number) {
  return SAMPLES_DIRECTORY "/photos/im" + std::to_string(number) + ".jpg";
}

std::size_t AllocatedBytes() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

void AddVector(TVarImage& image, const char* name, std::mt19937_64& random) {
  auto vector = std::make_unique<TFeatureVector>();
  vector->SetName(name);
  vector->SetLength(kVectorLength);
  FillAtRandom(vector->GetData(), random);
  image.GetImageSegment().GetFeatures().Add(vector.release());
}

std::unique_ptr<TCollection> MakeCollection() {
  auto collection = std::make_unique<TCollection>();
  std::mt19937_64 random(1);
  const std::string location = PictureDirectory(kCollectionSize, 0, 0);
  const std::size_t before = AllocatedBytes();
  auto database = std::make_unique<TVarDatabase>();
  database->SetName("db");
  database->SetLocation(location);
  database->ScanDirectory();
  for (const auto& image : database->GetImages()) {
    AddVector(*image, "hsv", random);
    AddVector(*image, "lbp", random);
  }
  collection->bytesForEachByte =
      static_cast<double>(AllocatedBytes() - before) / (2.0 * kCollectionSize * kVectorLength * sizeof(double));
  collection->store.Add(std::move(database));
  auto query = std::make_unique<TVarImage>();
  query->SetName("q");
  AddVector(*query, "hsv", random);
  AddVector(*query, "lbp", random);
  collection->store.Add(std::move(query));
  return collection;
}

}  // namespace

const TImageRGB& Mosaic(int width, int height) {
  static std::map<std::pair<int, int>, std::unique_ptr<TImageRGB>> known;
  auto& mosaic = known[{width, height}];
  if (mosaic) {
    return *mosaic;
  }
  mosaic = std::make_unique<TImageRGB>();
  mosaic->SetSize(width, height, true);
  int number = 0;
  for (int top = 0; top < height; top += 240) {
    for (int left = 0; left < width; left += 320) {
      TImageRGB photo;
      TImageRGB tile;
      if (!photo.LoadFromFile(SamplePhoto(number++ % 110 + 1))) {
        std::abort();
      }
      photo.ScaleTo(tile, 320, 240);
      for (int y = 0; y < 240; ++y) {
        const unsigned char* pixel = tile.GetPixels() + static_cast<std::ptrdiff_t>(y) * tile.GetStride();
        for (int x = 0; x < 320; ++x, pixel += 3) {
          mosaic->SetPixel(left + x, top + y, pixel[0], pixel[1], pixel[2]);
        }
      }
    }
  }
  return *mosaic;
}

std::string PictureDirectory(int count, int width, int height) {
  const filesystem::path directory =
      BenchDirectory() / (std::to_string(count) + "-" + std::to_string(width) + "x" + std::to_string(height));
  if (filesystem::exists(directory / "complete")) {
    return directory;
  }
  filesystem::create_directories(directory);
  const filesystem::path first = directory / "im1.jpg";
  if (width > 0) {
    Mosaic(width, height).SaveToFile(first);
  } else {
    std::ofstream{first};
  }
  for (int i = 2; i <= count; ++i) {
    filesystem::copy_file(first, directory / ("im" + std::to_string(i) + ".jpg"),
                          filesystem::copy_options::overwrite_existing);
  }
  std::ofstream(directory / "complete");
  return directory;
}

std::string SampleDirectory(int first, int last) {
  const filesystem::path directory =
      BenchDirectory() / ("photos-" + std::to_string(first) + "-" + std::to_string(last));
  filesystem::create_directories(directory);
  for (int i = first; i <= last; ++i) {
    const filesystem::path photo = SamplePhoto(i);
    filesystem::copy_file(photo, directory / photo.filename(), filesystem::copy_options::overwrite_existing);
  }
  return directory;
}

void EnterWorkDirectory() {
  const filesystem::path directory = BenchDirectory() / "work";
  filesystem::create_directories(directory);
  filesystem::current_path(directory);
}

std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  quoted += text;
  quoted += '"';
  return quoted;
}

TCollection& Collection() {
  static const std::unique_ptr<TCollection> collection = MakeCollection();
  return *collection;
}

void FillAtRandom(double* values, std::mt19937_64& random) {
  for (int i = 0; i < kVectorLength; ++i) {
    values[i] = static_cast<double>(random() >> 11) * 0x1p-61;
  }
}
