// The part of the display's coordinates that the live picture shows.
#pragma once

#include <optional>
#include <string>

namespace host {

struct Extents {
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;

    bool operator==(const Extents&) const = default;
};

// Given by the user, or learned: the host interface does not tell how large the display is, so the
// extents grow in round steps to take in every touch seen. Before the first touch they are those
// of the depth picture, whose pixels the touches are in when nothing is calibrated.
class SurfaceExtents {
  public:
    // "X0,Y0,X1,Y1" with X0 < X1 and Y0 < Y1; nothing for any other text.
    static std::optional<Extents> parse(const std::string& text);

    void fix(const Extents& extents);
    void startFrom(int depthWidth, int depthHeight);
    void see(double x, double y); // positions that are not finite count for nothing
    const Extents& extents() const { return extents_; }

  private:
    Extents extents_ = {0, 0, 640, 480};
    bool fixed_ = false;
    bool learned_ = false;
};

} // namespace host
