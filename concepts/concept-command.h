#pragma once

#include <string>

#include <boost/function.hpp>

#include "images/image-command.h"

class TVarVisualConcept;

/// Base of the commands that look for a concept in the segments of images.
class TConceptCommand : public TImageCommand {
 protected:
  using TImageCommand::TImageCommand;

  /// Labels every segment of the images on which the concept is found with the tag, and calls `visit` behind each
  /// image and `atEnd` behind the last one that was done. False if the tag is empty, the concept has no classifier or
  /// the user ended it; the reason has been printed.
  bool Locate(
      const TImageSelection& images, const TVarVisualConcept& visualConcept, const std::string& tag,
      const boost::function<void(TVarImage&)>& visit = [](TVarImage&) {},
      const boost::function<void()>& atEnd = [] {}) const;
};
