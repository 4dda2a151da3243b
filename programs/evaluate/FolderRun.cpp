#include "evaluate/FolderRun.h"

#include "evaluate/EvaluationError.h"
#include "evaluate/Pipeline.h"
#include "evaluate/TextTable.h"
#include "evaluate/pictureFiles.h"

#include <algorithm>
#include <cstdio>

namespace evaluate {

namespace fs = std::filesystem;

namespace {

using nlohmann::ordered_json;

std::size_t depthPicturesIn(const fs::path& folder) {
    std::size_t count = 0;
    std::error_code failure;
    for (fs::directory_iterator entry(folder, failure), end; entry != end;
         entry.increment(failure)) {
        const std::string name = entry->path().filename().string();
        count += entry->path().extension() == ".png" && name.rfind("color_", 0) != 0 ? 1 : 0;
    }
    if (failure) {
        throw EvaluationError(exitBadOption, "cannot read the folder " + folder.string() + ": " +
                                                 failure.message());
    }
    return count;
}

std::string numbered(std::size_t number) {
    char text[40];
    std::snprintf(text, sizeof text, "frame-%03zu", number);
    return text;
}

std::string place(const Point3& measured) {
    return decimal(measured[0], 1) + ", " + decimal(measured[1], 1) + ", " +
           decimal(measured[2], 1);
}

ordered_json placeAsJson(const Point3& measured) {
    return {{"column", measured[0]}, {"row", measured[1]}, {"depth", measured[2]}};
}

} // namespace

std::vector<PictureResult> playFolder(const fs::path& folder, const Settings& settings,
                                      std::size_t atMost, const fs::path& output) {
    std::size_t count = depthPicturesIn(folder);
    count = atMost == 0 ? count : std::min(count, atMost);
    Pipeline pipeline("images:" + folder.string() +
                          ",pace=off,hold=" + std::to_string(picturesHold),
                      settings.forPictures());
    pipeline.setCalibrated(false);
    std::vector<PictureResult> results;
    for (std::size_t picture = 0; picture < count; ++picture) {
        PictureResult result;
        for (int i = 0; i < picturesHold; ++i) {
            result.frame = pipeline.next();
        }
        if (!output.empty()) {
            result.file = writePicture(pipeline.snapshot(result.frame), output, numbered(picture));
        }
        results.push_back(std::move(result));
    }
    return results;
}

std::string textOf(const std::vector<PictureResult>& results) {
    TextTable table;
    table.row({"frame", "what", "number", "column, row, depth", "rows"});
    for (std::size_t i = 0; i < results.size(); ++i) {
        const FrameRecord& frame = results[i].frame;
        const std::string name = std::to_string(i);
        if (frame.blobs.empty() && frame.touches.empty()) {
            table.row({name, "nothing"});
        }
        for (std::size_t blob = 0; blob < frame.blobs.size(); ++blob) {
            const SeenBlob& seen = frame.blobs[blob];
            table.row({name, "blob", std::to_string(blob), place(seen.measured),
                       std::to_string(seen.firstRow) + " to " + std::to_string(seen.lastRow)});
        }
        for (const SeenTouch& touch : frame.touches) {
            table.row({name, "touch", std::to_string(touch.slot), place(touch.measured), ""});
        }
    }
    return table.text();
}

std::string jsonOf(const std::vector<PictureResult>& results, const std::string& folder,
                   const std::string& settings) {
    ordered_json document = {
        {"images", folder}, {"settings", settings}, {"frames", ordered_json::array()}};
    for (const PictureResult& result : results) {
        ordered_json blobs = ordered_json::array();
        for (const SeenBlob& blob : result.frame.blobs) {
            ordered_json entry = placeAsJson(blob.measured);
            entry["firstRow"] = blob.firstRow;
            entry["lastRow"] = blob.lastRow;
            blobs.push_back(entry);
        }
        ordered_json touches = ordered_json::array();
        for (const SeenTouch& touch : result.frame.touches) {
            ordered_json entry = {{"slot", touch.slot}};
            entry.update(placeAsJson(touch.measured));
            touches.push_back(entry);
        }
        document["frames"].push_back(
            {{"blobs", blobs}, {"touches", touches}, {"picture", result.file}});
    }
    return document.dump(2, ' ', false, ordered_json::error_handler_t::replace) + "\n";
}

} // namespace evaluate
