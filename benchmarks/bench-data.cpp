#include "benchmarks/bench-data.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <utility>

#include <malloc.h>
#include <sys/statvfs.h>

#include "images/crop.h"
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

void AddVector(TVarImage& image, const char* name, int length, std::mt19937_64& random) {
  auto vector = std::make_unique<TFeatureVector>();
  vector->SetName(name);
  vector->SetLength(static_cast<std::uint32_t>(length));
  FillAtRandom(vector->GetData(), length, random);
  image.GetImageSegment().GetFeatures().Add(vector.release());
}

void AddVectors(TVarImage& image, const TCollectionKind& kind, std::mt19937_64& random) {
  AddVector(image, "hsv", kind.length, random);
  if (kind.features > 1) {
    AddVector(image, "lbp", kind.length, random);
  }
}

std::unique_ptr<TVarDatabase> MakeDatabase(const std::string& location) {
  auto database = std::make_unique<TVarDatabase>();
  database->SetName("db");
  database->SetLocation(location);
  database->ScanDirectory();
  return database;
}

std::unique_ptr<TCollection> MakeCollection(const TCollectionKind& kind) {
  auto collection = std::make_unique<TCollection>();
  std::mt19937_64 random(1);
  const std::string location = PictureDirectory(kind.images, 0, 0);
  const std::size_t before = AllocatedBytes();
  auto database = MakeDatabase(location);
  for (const auto& image : database->GetImages()) {
    AddVectors(*image, kind, random);
  }
  collection->bytesForEachByte = static_cast<double>(AllocatedBytes() - before) /
                                 (1.0 * kind.features * kind.images * kind.length * sizeof(double));
  collection->store.Add(std::move(database));
  auto query = std::make_unique<TVarImage>();
  query->SetName("q");
  AddVectors(*query, kind, random);
  collection->store.Add(std::move(query));
  return collection;
}

/// A directory with what `change(photo, changed)` makes of the sample photographs, made on first use.
template <typename TChange>
std::string ChangedSamples(const std::string& name, int first, int last, const TChange& change) {
  const filesystem::path directory =
      BenchDirectory() / (name + "-" + std::to_string(first) + "-" + std::to_string(last));
  if (filesystem::exists(directory / "complete")) {
    return directory;
  }
  filesystem::create_directories(directory);
  for (int i = first; i <= last; ++i) {
    TImageRGB photo;
    TImageRGB changed;
    if (!photo.LoadFromFile(SamplePhoto(i))) {
      std::abort();
    }
    change(photo, changed);
    changed.SaveToFile(directory / filesystem::path(SamplePhoto(i)).filename());
  }
  std::ofstream(directory / "complete");
  return directory;
}

filesystem::path DirectoryName(int count, int width, int height) {
  return BenchDirectory() / (std::to_string(count) + "-" + std::to_string(width) + "x" + std::to_string(height));
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

const TImageRGB& SmallColor() {
  return Mosaic(640, 480);
}

const TImageGray& SmallGray() {
  static TImageGray gray;
  if (gray.GetWidth() == 0) {
    SmallColor().ToGray(gray);
  }
  return gray;
}

std::string PictureDirectory(int count, int width, int height) {
  const filesystem::path directory = DirectoryName(count, width, height);
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
    const filesystem::path next = directory / ("im" + std::to_string(i) + ".jpg");
    if (width > 0) {
      filesystem::copy_file(first, next, filesystem::copy_options::overwrite_existing);
    } else {
      std::ofstream{next};
    }
  }
  std::ofstream(directory / "complete");
  return directory;
}

bool HasRoomForEmptyFiles(int count) {
  struct statvfs room = {};
  filesystem::create_directories(BenchDirectory());
  // Some file systems have no such limit and say 0.
  return filesystem::exists(DirectoryName(count, 0, 0) / "complete") ||
         (statvfs(BenchDirectory().c_str(), &room) == 0 &&
          (room.f_files == 0 || room.f_favail > static_cast<fsfilcnt_t>(count)));
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

std::string CutSampleDirectory(int first, int last) {
  return ChangedSamples("cut", first, last, [](const TImageRGB& photo, TImageRGB& cut) {
    const int left = photo.GetWidth() / 16;
    const int top = photo.GetHeight() / 16;
    CropImage(photo, left, top, photo.GetWidth() - left, photo.GetHeight() - top, cut);
  });
}

std::string EnlargedSampleDirectory(int first, int last) {
  return ChangedSamples("enlarged", first, last,
                        [](const TImageRGB& photo, TImageRGB& enlarged) { photo.ScaleTo(enlarged, 4000, 3000); });
}

void EnterWorkDirectory(const std::string& name) {
  const filesystem::path directory = BenchDirectory() / name;
  filesystem::create_directories(directory);
  filesystem::current_path(directory);
}

std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  quoted += text;
  quoted += '"';
  return quoted;
}

TCollection& Collection(const TCollectionKind& kind) {
  static std::map<TCollectionKind, std::unique_ptr<TCollection>> known;
  auto& collection = known[kind];
  if (!collection) {
    collection = MakeCollection(kind);
  }
  return *collection;
}

std::unique_ptr<TVarList> DatabaseStore(const std::string& location) {
  auto store = std::make_unique<TVarList>();
  store->Add(MakeDatabase(location));
  return store;
}

void FillAtRandom(double* values, int length, std::mt19937_64& random) {
  for (int i = 0; i < length; ++i) {
    values[i] = static_cast<double>(random() >> 11) * 0x1p-61;
  }
}
