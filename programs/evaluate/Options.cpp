#include "evaluate/Options.h"

#include "common/exampleSettings.h"
#include "evaluate/EvaluationError.h"
#include "evaluate/Scene.h"

#include <cstdio>

#include <CLI/CLI.hpp>

namespace evaluate {

namespace fs = std::filesystem;

namespace {

constexpr const char* about =
    "Measures how well fingers are found: plays scenes of the simulated camera, whose truth is\n"
    "known, through the camera pipeline, with a calibration grid fitted from the truth, and "
    "prints\n"
    "what came out against what is true.";

constexpr const char* explanations =
    "Columns:\n"
    "  touch-downs  times that a finger touched for at least 5 frames\n"
    "  missed       never reported\n"
    "  broken       reported, not reported, and reported again during one touch\n"
    "  split        one more touch for a finger that has one\n"
    "  id switches  a touching finger was given another number\n"
    "  false        touches more than 40 mm from where any finger is or was just before\n"
    "  first report the frame of the first report, where 1 is the first frame of the touch; and\n"
    "               counted since the detection first saw the finger\n"
    "  before       millimetres along the surface from where the finger is, without calibration:\n"
    "               pixel and depth carried into space by the pinhole formula\n"
    "  after        the same with calibration, as a host gets it\n"
    "  off path     the same, from where the finger was within the last 6 frames: without the lag\n"
    "  jitter       root mean square of a resting finger's touch around its mean\n"
    "  lag          the delay with which the finger's way fits the touches best\n"
    "\n"
    "Exit codes:\n"
    "  0  done, goals met or not\n"
    "  1  a file cannot be written, or the pipeline stopped\n"
    "  2  an option, a scene's name or a folder of images is wrong\n"
    "  3  the settings cannot be read, or find no fingers\n"
    "  4  with --strict, a goal was not met or not measured";

std::string sceneList() {
    std::string text = "Scenes:\n";
    for (const Scene& scene : allScenes()) {
        std::string name = scene.name;
        name.resize(17, ' ');
        text += "  " + name + scene.about + "\n";
    }
    return text + "\n";
}

} // namespace

std::optional<int> parseOptions(int argc, char** argv, const fs::path& programFolder,
                                Options& options) {
    CLI::App app(about, "qvr-evaluate");
    app.footer(sceneList() + explanations);
    app.set_version_flag("--version", "qvr-evaluate " QVR_VERSION);
    app.get_formatter()->column_width(28);
    auto* const scenes =
        app.add_option("--scene", options.scenes, "play this scene only; can be repeated")
            ->type_name("NAME")
            ->expected(1)
            ->take_all();
    auto* const seed =
        app.add_option("--seed", options.seed, "chooses noise and small differences of the fingers")
            ->type_name("N")
            ->capture_default_str();
    app.add_option("--frames", options.frames,
                   "frames of every scene, or pictures of the folder, instead of all")
        ->type_name("N")
        ->check(CLI::Range(1, 10000000).description(""));
    app.add_option("--settings", options.settings, "the settings document (touch.json) to test")
        ->type_name("FILE");
    app.add_option("--json", options.json,
                   "also write the figures as JSON; - is standard output, the tables then go to "
                   "standard error")
        ->type_name("FILE");
    app.add_option("--pictures", options.pictures,
                   "write a picture of each scene's worst frame, or of each of the images")
        ->type_name("DIR");
    app.add_option("--images", options.images,
                   "print blobs and touches of the depth pictures in a folder instead")
        ->type_name("DIR")
        ->excludes(scenes)
        ->excludes(seed);
    app.add_flag("--strict", options.strict, "fail when a goal is not met");
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) {
        return app.exit(success); // help or version
    } catch (const CLI::ParseError& error) {
        std::fprintf(stderr, "qvr-evaluate: %s; see qvr-evaluate --help\n", error.what());
        return exitBadOption;
    }
    if (options.settings.empty()) {
        const char* const name = options.images.empty() ? "simulated" : "hand";
        options.settings =
            programs::exampleSettings(name, programFolder) / "QVR_calibration" / "touch.json";
    }
    return std::nullopt;
}

} // namespace evaluate
