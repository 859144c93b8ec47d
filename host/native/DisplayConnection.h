#pragma once

// The application's connection to the X server, watched for its end. Main thread only.
class DisplayConnection {
 public:
  // `display` is an open Xlib Display*.
  explicit DisplayConnection(void* display);
  ~DisplayConnection();
  DisplayConnection(const DisplayConnection&) = delete;
  DisplayConnection& operator=(const DisplayConnection&) = delete;

  [[nodiscard]] int Descriptor() const;

  // Whether the server has gone away. Xlib's calls do nothing from then on.
  [[nodiscard]] bool IsLost() const { return lost_; }
  void MarkLost() { lost_ = true; }

 private:
  void* display_;
  bool lost_ = false;
};
