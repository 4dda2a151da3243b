// Depth images under any settings: every vector form against the plain one, from the marks of the
// first image to the touches of the last.
//
// Input: sizes, a seed for what is drawn, the settings, then depth values.
#include "detection/blobManager.h"
#include "detection/detectionKernels.h"
#include "detection/touchManager.h"
#include "fuzzing.h"
#include "randomImages.h"

#include <vector>

namespace {

struct Sequence {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    literal::Settings settings;
    std::vector<literal::Image> images;
};

literal::Settings readSettings(fuzzing::Input& input) {
    literal::Settings settings;
    settings.maxDiffNear = input.number<std::uint16_t>();
    settings.maxDiffFar = input.number<std::uint16_t>();
    settings.nearNoiseCutoff = input.number<std::uint16_t>();
    settings.farLimit = input.number<std::uint16_t>();
    settings.blobLineAssocLimitU = input.number<std::int32_t>();
    settings.blobLineAssocLimitV = input.number<std::int32_t>();
    settings.flatnessRadius = input.number<std::uint32_t>();
    settings.flatnessThreshold = input.number<std::uint16_t>();
    settings.biasStrength = input.number<std::uint32_t>();
    settings.minBlobSize = input.number<std::uint32_t>();
    settings.minBlobSpace = input.number<std::uint32_t>();
    settings.allowedBlobNoiseGap = input.number<std::uint32_t>();
    return settings;
}

// Drawn pictures have the shapes that detection is about; the fuzzer's own values go over them.
Sequence readSequence(fuzzing::Input& input) {
    Sequence sequence;
    sequence.width = 1U + input.byte();
    sequence.height = 1U + input.byte() % 48U;
    const unsigned switches = input.byte();
    literal::RandomCases random(input.number<std::uint32_t>());
    sequence.settings = (switches & 1U) != 0 ? random.settings() : readSettings(input);
    for (unsigned count = 0; count <= switches / 64U; ++count) {
        sequence.images.push_back(
            (switches & 2U) != 0 ? random.image(sequence.width, sequence.height, sequence.settings)
                                 : literal::Image(sequence.width, sequence.height));
        literal::Image& image = sequence.images.back();
        const std::size_t start = input.number<std::uint16_t>();
        const std::size_t values = input.byte();
        for (std::size_t i = start; i < start + values && i < image.pixels.size(); ++i) {
            image.pixels[i] = input.number<std::uint16_t>();
        }
    }
    return sequence;
}

bool sameBlob(const QVR::cImageBlob& a, const QVR::cImageBlob& b) {
    // Compared by their bits: a centre may be no number.
    const auto sameBits = [](float left, float right) {
        return std::memcmp(&left, &right, sizeof left) == 0;
    };
    return a.lineStart == b.lineStart && a.lineEnd == b.lineEnd && a.minX == b.minX &&
           a.maxX == b.maxX && a.minY == b.minY && a.maxY == b.maxY && a.sumStart == b.sumStart &&
           a.sumEnd == b.sumEnd && a.lineCount == b.lineCount && a.valid == b.valid &&
           a.dirty == b.dirty && sameBits(a.lineCenterX, b.lineCenterX) &&
           sameBits(a.centerX, b.centerX) && sameBits(a.centerY, b.centerY) &&
           sameBits(a.centerDepth, b.centerDepth);
}

struct Pipeline {
    Pipeline(const Sequence& sequence, const QVR::DetectionKernels& form) : kernels(&form) {
        blobs.setConfig(8000.0F, sequence.width, sequence.height);
        literal::apply(sequence.settings, blobs);
        touches.outputCalibratedTouches = false;
    }

    void take(const literal::Image& image) {
        QVR::forceKernels(*kernels);
        blobs.processFrame(image.data());
        blobs.extractBlobs(image.data());
        blobs.updateTouches(&touches);
    }

    const QVR::DetectionKernels* kernels;
    QVR::blobManager blobs;
    QVR::touchManager touches;
};

void compare(Pipeline& plain, Pipeline& fast) {
    using fuzzing::require;
    require(plain.blobs.mask == fast.blobs.mask, "the marks are the same");
    require(plain.blobs.cutoffDepth == fast.blobs.cutoffDepth, "the cut is the same");
    for (std::size_t i = 0; i < plain.blobs.blobs.size(); ++i) {
        require(sameBlob(plain.blobs.blobs[i], fast.blobs.blobs[i]), "the blobs are the same");
    }
    const QVR::NetworkTouch* expected = nullptr;
    const QVR::NetworkTouch* touches = nullptr;
    plain.touches.getTouches(&expected);
    fast.touches.getTouches(&touches);
    require(std::memcmp(expected, touches, 10 * sizeof *touches) == 0, "the touches are the same");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::swallowMessages();
    fuzzing::Input input(data, size);
    const Sequence sequence = readSequence(input);
    Pipeline plain(sequence, *QVR::findKernels("plain"));
    std::vector<Pipeline> others;
    for (const char* name : {"sse", "avx2", "avx512"}) {
        if (const QVR::DetectionKernels* kernels = QVR::findKernels(name)) {
            others.emplace_back(sequence, *kernels);
        }
    }
    for (const literal::Image& image : sequence.images) {
        plain.take(image);
        for (Pipeline& other : others) {
            other.take(image);
            compare(plain, other);
        }
    }
    return 0;
}
