#include "images/image-command.h"

#include "images/picture-report.h"
#include "images/var-database.h"
#include "images/var-image.h"

std::size_t TImageSelection::GetSize() const {
  return database == nullptr ? 1 : database->GetImages().size();
}

TVarImage& TImageSelection::operator[](std::size_t i) const {
  return database == nullptr ? *image : *database->GetImages()[i];
}

std::optional<TImageSelection> TImageCommand::RequireImages(const std::vector<std::string>& params) const {
  if (auto* image = FindVariable<TVarImage>(params[0])) {
    return TImageSelection(*image);
  }
  if (const auto* database = FindVariable<TVarDatabase>(params[0])) {
    return TImageSelection(*database);
  }
  PrintWrongType(1, "'image' or 'database'");
  return std::nullopt;
}

const TVarDatabase* TImageCommand::RequireFilledDatabase(const std::vector<std::string>& params,
                                                         const char* ifEmpty) const {
  const auto* database = Require<TVarDatabase>(params, 1);
  if (database != nullptr && database->GetImages().empty()) {
    Print(ifEmpty);
    return nullptr;
  }
  return database;
}

bool TImageCommand::ForEachImage(const TImageSelection& images, const boost::function<bool(TVarImage&)>& step,
                                 const boost::function<void()>& atEnd) const {
  return ForEach(
      images.GetSize(), [&](std::size_t i) { return step(images[i]); }, atEnd);
}

bool TImageCommand::ProcessImages(const TImageSelection& images,
                                  const boost::function<bool(TVarImage&, TPictureReport&)>& step) const {
  if (images.IsDatabase()) {
    Print("Processing.. this could take some time");
    // Drawn before the first picture, which may take seconds.
    ProcessEvents();
  }
  TPictureReport report([this](const std::string& line) { PrintLoss(line); });
  const bool isDone = ForEachImage(
      images, [&](TVarImage& image) { return step(image, report); }, [&] { report.PrintRest(); });
  if (isDone && images.IsDatabase()) {
    Print("Processing done");
  }
  return isDone;
}
