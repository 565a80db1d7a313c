#pragma once

#include <string>
#include <vector>

#include <QImage>

#include "gui/picture-view.h"
#include "images/image-rgb.h"

class TPictureReport;

/// The picture of a ranking as a map of 800 x 800 logical pixels: tiles in random directions, the best in the middle
/// and weaker ones towards the rim.
class TMapCanvas {
 public:
  /// For `theCount` results on a screen that has `theRatio` pixels for a logical one.
  TMapCanvas(int theCount, qreal theRatio);

  /// Draws a picture over what is there, at a distance from the middle that grows with its rank, from 0 to below the
  /// count. The query, of rank -1, lies one step beyond the middle. What is wrong with the file goes to the report; one
  /// that cannot be read leaves its place free.
  void Draw(const std::string& filename, const std::string& description, int rank, TPictureReport& report);

  QImage GetPicture() const;
  /// What lies where, in the order in which it was drawn.
  const std::vector<TPictureItem>& GetItems() const { return items; }

 private:
  int count;
  qreal ratio;
  TImageRGB canvas;
  TImageRGB tile;
  std::vector<TPictureItem> items;
};
