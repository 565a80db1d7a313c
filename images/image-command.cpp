#include "images/image-command.h"

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
