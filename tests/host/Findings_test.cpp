#include "demo/Findings.h"
#include "demo/Summary.h"

#include <gtest/gtest.h>

namespace {

using demo::Findings;
using demo::Finger;
using demo::HostFrame;
using demo::judge;
using demo::ServerFrame;

// A server and its host, frame by frame.
struct Scene {
    std::vector<ServerFrame> server;
    std::vector<HostFrame> host;

    void frame(const std::vector<Finger>& fingers, const std::vector<demo::ServerTouch>& touches,
               bool heard = true) {
        ServerFrame sent;
        sent.touches = touches;
        sent.truthKnown = true;
        sent.truth = fingers;
        server.push_back(sent);
        if (heard) {
            HostFrame received;
            received.time = static_cast<double>(server.size()) / 30;
            for (const demo::ServerTouch& touch : touches) {
                received.touches.push_back(touch.touch);
            }
            host.push_back(received);
        }
    }
};

Finger finger(int id, double x, double y, bool touching = true) {
    return {id, touching, {2 * x, 2 * y}, {x, y, 100}};
}

// A touch that differs a little from frame to frame, as touches do.
demo::ServerTouch touch(int slot, double x, double y) {
    return {{slot, {static_cast<float>(x), static_cast<float>(y), 90}}, {2 * x, 2 * y}};
}

TEST(Findings, CountFramesTouchesAndRate) {
    Scene scene;
    scene.frame({}, {});
    scene.frame({finger(0, 10, 10)}, {touch(0, 10, 10)});
    scene.frame({finger(0, 10, 10)}, {touch(0, 11, 10), touch(1, 12, 10)});
    scene.frame({}, {});
    scene.frame({finger(0, 10, 10)}, {touch(0, 12, 10)});
    const Findings findings = judge(scene.host, scene.server);
    EXPECT_EQ(findings.frames, 5u);
    EXPECT_NEAR(findings.frameRate, 30, 1e-6);
    EXPECT_EQ(findings.touchDowns, 3u);
    EXPECT_EQ(findings.mostAtOnce, 2u);
}

TEST(Findings, MeasureTheErrorOnTheDisplayAndInPixels) {
    Scene scene;
    for (int i = 0; i < 20; ++i) {
        const double error = i == 0 ? 12 : 1 + i * 1e-3;
        scene.frame({finger(0, 100, 50)}, {touch(0, 100 + error, 50)});
    }
    const Findings findings = judge(scene.host, scene.server);
    EXPECT_EQ(findings.compared, 20u);
    EXPECT_NEAR(findings.millimeters.mean, (12 + 19 + 0.19) / 20, 1e-4);
    EXPECT_NEAR(findings.millimeters.p95, 1.019, 1e-4);
    EXPECT_NEAR(findings.pixels.p95, 2.038, 1e-4);
    EXPECT_EQ(findings.contacts, 1u);
    EXPECT_EQ(findings.missed, 0u);
    EXPECT_TRUE(demo::problemsOf(findings, 2).empty());
    EXPECT_EQ(demo::problemsOf(findings, 1.5),
              std::vector<std::string>{
                  "touches are off by 1.56 mm on average; at most 1.5 mm are tolerated"});
}

TEST(Findings, JoinTouchesWithTheNearestFingersOneToOne) {
    Scene scene;
    for (int i = 0; i < 6; ++i) {
        const double shift = i * 0.01;
        scene.frame({finger(0, 10, 10), finger(1, 30, 10)},
                    {touch(0, 24 + shift, 10), touch(1, 32 + shift, 10)});
    }
    const Findings findings = judge(scene.host, scene.server);
    EXPECT_NEAR(findings.millimeters.mean, (14 + 2) / 2 + 0.025, 0.01);
    EXPECT_EQ(findings.missed, 0u);
}

TEST(Findings, MissAFingerThatTouchedLongEnough) {
    Scene scene;
    for (int i = 0; i < 5; ++i) {
        scene.frame({finger(0, 10, 10), finger(1, 200, 10)}, {touch(0, 10 + i * 0.01, 10)});
    }
    scene.frame({finger(0, 10, 10)}, {touch(0, 10.5, 10)});
    const Findings findings = judge(scene.host, scene.server);
    EXPECT_EQ(findings.contacts, 2u);
    EXPECT_EQ(findings.missed, 1u);
    EXPECT_EQ(demo::problemsOf(findings, 5),
              std::vector<std::string>{
                  "touches are missing: 1 of 2 times that a finger touched were never reported"});
}

TEST(Findings, ForgiveAContactThatWasTooShort) {
    Scene scene;
    for (int i = 0; i < 8; ++i) {
        std::vector<Finger> fingers = {finger(0, 10, 10)};
        if (i < 4) {
            fingers.push_back(finger(1, 200, 10));
        }
        scene.frame(fingers, {touch(0, 10 + i * 0.01, 10)});
    }
    EXPECT_EQ(judge(scene.host, scene.server).missed, 0u);
}

TEST(Findings, MissAContactOfAHostThatHearsNoTouches) {
    Scene scene;
    for (int i = 0; i < 6; ++i) {
        scene.frame({finger(0, 10, 10)}, {});
    }
    const Findings findings = judge(scene.host, scene.server);
    EXPECT_EQ(findings.missed, 1u);
    EXPECT_EQ(demo::problemsOf(findings, 5).size(), 2u);
}

TEST(Findings, DoNotBlameTheHostForWhatHappenedBeforeIt) {
    Scene scene;
    for (int i = 0; i < 9; ++i) {
        scene.frame({finger(1, 200, 10)}, {}, false);
    }
    for (int i = 0; i < 6; ++i) {
        scene.frame({finger(0, 10, 10)}, {touch(0, 10 + i * 0.01, 10)});
    }
    const Findings findings = judge(scene.host, scene.server);
    EXPECT_EQ(findings.contacts, 1u);
    EXPECT_EQ(findings.missed, 0u);
}

TEST(Findings, CountTouchesWhereNoFingerIs) {
    Scene scene;
    for (int i = 0; i < 10; ++i) {
        const double shift = i * 0.01;
        // Finger 1 hovers: a touch that lags behind its lifting is no ghost.
        scene.frame({finger(0, 10, 10), finger(1, 60, 10, false)},
                    {touch(0, 10 + shift, 10), touch(1, 61, 10), touch(2, 200, 10)});
    }
    const Findings findings = judge(scene.host, scene.server);
    EXPECT_EQ(findings.ghosts, 10u);
    EXPECT_EQ(demo::problemsOf(findings, 5),
              std::vector<std::string>{"10 times a touch was reported where no finger is"});
}

TEST(Findings, FailWithoutFrames) {
    EXPECT_EQ(demo::problemsOf(judge({}, {}), 5),
              std::vector<std::string>{"no frames arrived at the host"});
}

TEST(Findings, FailOnTouchesThatWereNeverSent) {
    Scene scene;
    scene.frame({}, {touch(0, 1, 1)});
    scene.host[0].touches[0].position[0] = 77;
    const Findings findings = judge(scene.host, scene.server);
    EXPECT_EQ(findings.strangers, 1u);
    EXPECT_EQ(demo::problemsOf(findings, 5).at(0),
              "1 frames held touches that the server never sent");
}

TEST(Findings, AskForTouchesOnlyWithoutTruth) {
    Scene scene;
    scene.frame({}, {touch(0, 1, 1)});
    scene.frame({}, {});
    for (ServerFrame& frame : scene.server) {
        frame.truthKnown = false;
    }
    Findings findings = judge(scene.host, scene.server);
    EXPECT_FALSE(findings.truthKnown);
    EXPECT_TRUE(demo::problemsOf(findings, 5).empty());
    findings.touchDowns = 0;
    EXPECT_EQ(demo::problemsOf(findings, 5), std::vector<std::string>{"no touches were found"});
}

TEST(Summary, TellsTheFigures) {
    Findings findings;
    findings.frames = 178;
    findings.frameRate = 29.8;
    findings.touchDowns = 14;
    findings.mostAtOnce = 5;
    const std::string without = demo::figuresText(findings, 5);
    EXPECT_NE(without.find("178   (29.8 a second)"), std::string::npos) << without;
    EXPECT_NE(without.find("not known"), std::string::npos);
    findings.truthKnown = true;
    findings.contacts = 14;
    findings.missed = 1;
    findings.compared = 900;
    findings.millimeters = {0.81, 1.92};
    findings.pixels = {1.2, 2.7};
    const std::string text = demo::figuresText(findings, 5);
    for (const char* part : {"(13 of them reported)", "0.81 mm", "1.92 mm", "1.20 pixels",
                             "2.70 pixels", "at most 5 mm", "900 touches"}) {
        EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
    }
}

} // namespace
