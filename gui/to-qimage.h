#pragma once

class QImage;
class TImageRGB;

/// A copy of the picture in QImage::Format_RGB888; a null image for a picture without pixels.
QImage ToQImage(const TImageRGB& picture);
