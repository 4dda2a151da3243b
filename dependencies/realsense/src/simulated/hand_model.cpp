#include "simulated/hand_model.h"

#include "simulated/scene_geometry.h"

#include <array>

namespace camera::simulated {
namespace {

// Everything is given for the right hand; the left one mirrors x.
class HandBuilder {
  public:
    HandBuilder(const HandPose& hand, double side, std::vector<Capsule>& out)
        : hand_(hand), side_(side), out_(out) {}

    void stretched(const FingerPose& finger) {
        // The tip is the nearest point of its sphere, whose centre lies straight behind it.
        const Vector tip = finger.tip + Vector{0.0, 0.0, fingertipRadius};
        const Vector root = knuckle(finger.slot);
        const double bend = hand_.lyingFlat ? 0.06 : 0.62;
        const Vector outward{side_ * splay(finger.slot), hand_.lyingFlat ? 1.0 : 0.20, bend};
        const Vector joint = tip + normalized(outward) * 36.0;
        add(tip, joint, fingertipRadius);
        add(joint, root, fingertipRadius + 0.6);
    }

    void folded(int slot) {
        const Vector root = knuckle(slot);
        add(root + Vector{0.0, 1.0, -4.0}, root + Vector{0.0, 18.0, -3.0}, 9.0);
    }

    void palm() {
        const Vector index = at(-34.0, 50.0, depth(0.0));
        const Vector little = at(34.0, 52.0, depth(0.0));
        const Vector heel = at(0.0, 104.0, depth(4.0));
        add(index, little, 12.5);
        add(at(-22.0, 60.0, depth(2.0)), at(-12.0, 100.0, depth(4.0)), 15.0);
        add(at(0.0, 60.0, depth(2.0)), heel, 15.0);
        add(at(22.0, 60.0, depth(2.0)), at(12.0, 100.0, depth(4.0)), 15.0);
        const Vector wrist = at(5.0, 138.0, depth(14.0));
        add(heel, wrist, 19.0);
        add(wrist, at(20.0, 330.0, depth(28.0)), 25.0, Material::Sleeve);
    }

  private:
    Vector at(double x, double y, double z) const {
        return {hand_.position.x + side_ * x, hand_.position.y + y, z};
    }

    // A hand that lies flat is all in one plane; else the palm stays behind the far clip.
    double depth(double more) const { return (hand_.lyingFlat ? 286.0 : 346.0) + more; }

    static double splay(int slot) {
        static constexpr std::array<double, 5> values{-0.02, 0.03, 0.1, -0.1, -0.2};
        return values[static_cast<std::size_t>(slot)];
    }

    Vector knuckle(int slot) const {
        static constexpr std::array<double, 5> x{-11.0, 11.0, 32.0, -32.0, -38.0};
        const double y = slot == 4 ? 78.0 : 48.0;
        return at(x[static_cast<std::size_t>(slot)], y, depth(slot == 4 ? 0.0 : -2.0));
    }

    void add(const Vector& a, const Vector& b, double radius, Material material = Material::Skin) {
        out_.push_back({a, b, radius, material});
    }

    const HandPose& hand_;
    double side_;
    std::vector<Capsule>& out_;
};

} // namespace

std::vector<Capsule> capsulesOf(const ScenePose& pose) {
    std::vector<Capsule> capsules;
    for (std::size_t hand = 0; hand < pose.hands.size(); ++hand) {
        if (!pose.hands[hand].present)
            continue;
        HandBuilder builder(pose.hands[hand], hand == 0 ? 1.0 : -1.0, capsules);
        builder.palm();
        std::array<bool, 5> isStretched{};
        for (const FingerPose& finger : pose.fingers) {
            if (static_cast<std::size_t>(finger.hand) != hand)
                continue;
            builder.stretched(finger);
            isStretched[static_cast<std::size_t>(finger.slot)] = true;
        }
        for (int slot = 0; slot < 5; ++slot)
            if (!isStretched[static_cast<std::size_t>(slot)])
                builder.folded(slot);
    }
    return capsules;
}

} // namespace camera::simulated
