#pragma once

#import <AppKit/NSImage.h>

#include <string>
#include <utility>

// Picture files on their way from the platform, which writes them, to a window.

// Whether there is a folder: it is made when nothing is there. Logs why not.
[[nodiscard]] bool TsMakeFolder(NSString* folder);

// A path in the user's temporary folder where nothing is.
[[nodiscard]] std::string TsTemporaryPicturePath();

// The image in a file that we have written ourselves, one point a pixel, autoreleased. nil when there is none.
[[nodiscard]] NSImage* TsImageOfFile(const std::string& path);

// Removes the file at the end of its life.
class TsTemporaryPicture {
 public:
  explicit TsTemporaryPicture(std::string path) : path_(std::move(path)) {}
  TsTemporaryPicture(const TsTemporaryPicture&) = delete;
  TsTemporaryPicture& operator=(const TsTemporaryPicture&) = delete;
  ~TsTemporaryPicture();

  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string path_;
};
