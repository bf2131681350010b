// SPDX-License-Identifier: MIT
// Animations, and the pictures that materials show.
#include "BufferUri.h"
#include "Reading.h"

#include <algorithm>
#include <filesystem>

namespace skindesk::gltf {

namespace {

std::vector<float> ReadFloats(Reading& reading, const AccessorView& view, JsonValue where)
{
    reading.budget.Spend(where, view.Count() * view.Components(), sizeof(float));
    std::vector<float> numbers(view.Count() * view.Components());
    view.Floats(0, view.Count(), numbers.data());
    return numbers;
}

AnimationSampler ReadSampler(Reading& reading, JsonValue v)
{
    const OpenedFile& file = reading.file;
    const JsonValue input = reading.json.Member(file.Object(v), "input");
    const JsonValue output = reading.json.Member(v, "output");
    if (input == JSON_NONE || output == JSON_NONE) {
        file.Refuse(v, "the sampler has no input or no output");
    }
    AnimationSampler sampler;
    sampler.times = ReadFloats(reading, ViewAt(file, input, "SCALAR", reading.budget), input);
    // Comparing this way round also finds times that are not numbers.
    if (!std::is_sorted(sampler.times.begin(), sampler.times.end(), std::less<>()) ||
        std::any_of(sampler.times.begin(), sampler.times.end(), [](float t) { return t != t; })) {
        reading.warnings.Add(input, "the times of the keys do not ascend");
    }
    const Accessor accessor = DescribeAccessor(file, file.Index(output, file.List("accessors").size(), "accessors"));
    sampler.values = ReadFloats(reading, ViewAccessor(file, accessor, reading.budget), output);
    const std::string name = file.TextOr(v, "interpolation", "LINEAR");
    if (name == "STEP") {
        sampler.interpolation = Interpolation::Step;
    } else if (name == "CUBICSPLINE") {
        sampler.interpolation = Interpolation::CubicSpline;
    } else if (name != "LINEAR") {
        reading.warnings.Add(v, "the interpolation \"" + OneLine(name) + "\" is unknown, LINEAR is taken");
    }
    return sampler;
}

std::size_t MorphTargetCount(const CharacterFile& records, int node)
{
    const int mesh = records.nodes[static_cast<std::size_t>(node)].mesh;
    return mesh < 0 ? 0 : records.meshes[static_cast<std::size_t>(mesh)].morphTargets.size();
}

std::size_t NumbersPerKey(const CharacterFile& records, const AnimationChannel& channel)
{
    switch (channel.property) {
    case AnimatedProperty::Rotation:
        return 4;
    case AnimatedProperty::MorphWeights:
        return MorphTargetCount(records, channel.node);
    default:
        return 3;
    }
}

void ReadChannel(Reading& reading, JsonValue v, Animation& animation)
{
    const OpenedFile& file = reading.file;
    const JsonValue samplerValue = reading.json.Member(file.Object(v), "sampler");
    const JsonValue target = reading.json.Member(v, "target");
    if (samplerValue == JSON_NONE || target == JSON_NONE) {
        file.Refuse(v, "the channel has no sampler or no target");
    }
    AnimationChannel channel;
    channel.sampler = file.Index(samplerValue, animation.samplers.size(), "samplers");
    channel.node = file.IndexOr(file.Object(target), "node", "nodes", -1);
    const std::string path = file.TextOr(target, "path", "");
    if (path == "translation") {
        channel.property = AnimatedProperty::Translation;
    } else if (path == "rotation") {
        channel.property = AnimatedProperty::Rotation;
    } else if (path == "scale") {
        channel.property = AnimatedProperty::Scale;
    } else if (path == "weights") {
        channel.property = AnimatedProperty::MorphWeights;
    } else {
        return; // something that an extension animates
    }
    if (channel.node < 0) {
        return;
    }
    const AnimationSampler& sampler = animation.samplers[static_cast<std::size_t>(channel.sampler)];
    const std::size_t perKey =
        NumbersPerKey(reading.into, channel) * (sampler.interpolation == Interpolation::CubicSpline ? 3 : 1);
    if (sampler.values.size() != sampler.times.size() * perKey) {
        file.Refuse(v, Counted(sampler.times.size(), "key needs ", "keys need ") +
                           std::to_string(sampler.times.size() * perKey) + " numbers for \"" + path +
                           "\", the output has " + std::to_string(sampler.values.size()));
    }
    animation.channels.push_back(channel);
}

// Pictures may lie outside the folder in files that artists exchange; they are then neither shown nor taken along.
void ReadImage(Reading& reading, JsonValue v)
{
    const OpenedFile& file = reading.file;
    Image image;
    image.mimeType = file.TextOr(file.Object(v), "mimeType", "");
    image.bufferView = file.IndexOr(v, "bufferView", "bufferViews", -1);
    const JsonValue uri = reading.json.Member(v, "uri");
    if (uri != JSON_NONE) {
        const std::string text = file.Text(uri);
        std::string name;
        if (IsDataUri(text)) {
            image.mimeType = image.mimeType.empty() ? MimeTypeOf(text) : image.mimeType;
        } else if (const std::string wrong = WhatIsWrongWithName(text, name); !wrong.empty()) {
            reading.warnings.Add(uri, "the name of the picture " + wrong + "; it is not shown");
        } else if (!LiesInFolder(file.Folder(), name)) {
            reading.warnings.Add(uri, "the picture leads out of the folder through a symbolic link; it is not shown");
        } else {
            image.file = (std::filesystem::path(file.Folder()) / name).string();
        }
    }
    reading.into.images.push_back(std::move(image));
}

void ReadMaterial(Reading& reading, JsonValue v)
{
    const OpenedFile& file = reading.file;
    Material material;
    material.name = file.TextOr(file.Object(v), "name", "");
    const JsonValue surface = reading.json.Member(v, "pbrMetallicRoughness");
    const JsonValue colour = reading.json.Member(surface, "baseColorFactor");
    if (colour != JSON_NONE) {
        const std::vector<double> numbers = file.Numbers(colour, 4);
        std::copy(numbers.begin(), numbers.end(), material.baseColour.begin());
    }
    const JsonValue use = reading.json.Member(surface, "baseColorTexture");
    if (use != JSON_NONE) {
        const int texture = file.IndexOr(file.Object(use), "index", "textures", -1);
        material.texCoord = static_cast<int>(std::min<std::size_t>(file.WholeNumberOr(use, "texCoord", 0), 255));
        if (texture >= 0) {
            const JsonValue t = file.Object(file.List("textures")[static_cast<std::size_t>(texture)]);
            material.baseColourImage = file.IndexOr(t, "source", "images", -1);
        }
    }
    reading.into.materials.push_back(std::move(material));
}

} // namespace

void ReadMaterialsAndImages(Reading& reading)
{
    for (const JsonValue v : reading.file.List("images")) {
        ReadImage(reading, v);
    }
    for (const JsonValue v : reading.file.List("materials")) {
        ReadMaterial(reading, v);
    }
}

void ReadAnimations(Reading& reading)
{
    for (const JsonValue v : reading.file.List("animations")) {
        Animation animation;
        animation.name = reading.file.TextOr(reading.file.Object(v), "name", "");
        for (const JsonValue sampler : reading.file.Array(reading.json.Member(v, "samplers"))) {
            animation.samplers.push_back(ReadSampler(reading, sampler));
        }
        for (const JsonValue channel : reading.file.Array(reading.json.Member(v, "channels"))) {
            ReadChannel(reading, channel, animation);
        }
        reading.into.animations.push_back(std::move(animation));
    }
}

} // namespace skindesk::gltf
