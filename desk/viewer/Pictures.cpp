// SPDX-License-Identifier: MIT
// Decoding pictures and handing them to the models.
#include "desk/viewer/Pictures.h"

#include "desk/model/ZDeskSession.h"
#include "gltf/Textures.h"
#include "zbaselib/ZReport.h"
#include "zmodel/ZGeometryModels.h"

#include <QImage>

#include <algorithm>

namespace gltf = skindesk::gltf;

namespace {

constexpr int kLargestSide = 4096; ///< what every OpenGL of the last twenty years takes

/// Top row first, as texture coordinates of the file count.
std::shared_ptr<const ZPicture> Decode(const std::vector<std::uint8_t>& bytes)
{
    QImage image = QImage::fromData(bytes.data(), static_cast<int>(bytes.size()));
    if (image.isNull())
        return nullptr;
    if (std::max(image.width(), image.height()) > kLargestSide)
        image = image.scaled(kLargestSide, kLargestSide, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    image = image.convertToFormat(QImage::Format_RGBA8888);
    auto picture = std::make_shared<ZPicture>();
    picture->width = image.width();
    picture->height = image.height();
    for (int row = 0; row < image.height(); ++row)
        picture->rgba.insert(picture->rgba.end(), image.constScanLine(row),
                             image.constScanLine(row) + 4 * image.width());
    return picture;
}

/// Each picture of a file once, however many materials show it.
class PictureShelf
{
public:
    PictureShelf(const gltf::CharacterFile& file, std::vector<std::string>& warnings)
        : m_file(file), m_warnings(warnings)
    {
    }
    std::shared_ptr<const ZPicture> Of(int image)
    {
        const auto [entry, isNew] = m_pictures.try_emplace(image);
        if (isNew)
            entry->second = Load(image);
        return entry->second;
    }

private:
    std::shared_ptr<const ZPicture> Load(int image)
    {
        try {
            if (auto picture = Decode(gltf::ImageBytes(m_file, image)))
                return picture;
            m_warnings.push_back("picture " + std::to_string(image) + " is of a kind that the desk cannot show");
        } catch (const gltf::FileError& error) {
            m_warnings.push_back(error.what());
        }
        return nullptr;
    }
    const gltf::CharacterFile& m_file;
    std::vector<std::string>& m_warnings;
    std::map<int, std::shared_ptr<const ZPicture>> m_pictures;
};

std::shared_ptr<const ZAppearance> AppearanceOf(const gltf::CharacterFile& file, int index, PictureShelf& shelf)
{
    const gltf::Mesh& mesh = file.meshes[static_cast<size_t>(index)];
    auto appearance = std::make_shared<ZAppearance>();
    bool showsPicture = false;
    for (const gltf::Primitive& primitive : mesh.primitives) {
        ZMaterialRun run;
        run.firstTriangle = primitive.firstTriangle;
        run.triangleCount = primitive.triangleCount;
        if (primitive.material >= 0) {
            const gltf::Material& material = file.materials[static_cast<size_t>(primitive.material)];
            std::copy_n(material.baseColour.begin(), 3, run.colour);
            if (material.baseColourImage >= 0)
                run.picture = shelf.Of(material.baseColourImage);
        }
        showsPicture |= run.picture != nullptr;
        if (run.triangleCount > 0)
            appearance->runs.push_back(std::move(run));
    }
    if (!showsPicture)
        return nullptr;
    appearance->texCoords = gltf::ReadTexCoords(file, index);
    return appearance->texCoords.empty() ? nullptr : appearance;
}

} // namespace

DecodedPictures DecodePictures(const gltf::CharacterFile& file)
{
    DecodedPictures decoded;
    PictureShelf shelf(file, decoded.warnings);
    for (size_t mesh = 0; mesh < file.meshes.size(); ++mesh)
        if (!file.meshes[mesh].nurbs)
            if (auto appearance = AppearanceOf(file, static_cast<int>(mesh), shelf))
                decoded.meshes[static_cast<int>(mesh)] = std::move(appearance);
    return decoded;
}

void ShowPictures(ZDeskSession& desk, int document, const DecodedPictures& pictures)
{
    for (const std::string& warning : pictures.warnings)
        ZReport_Warning(warning);
    for (ZModel* const model : desk.Session().GetScene().GetModels()) {
        auto* const geometry = Object_Cast<ZModelGeometryBase>(model);
        if (geometry == nullptr || model->GetDocument() != document)
            continue;
        const auto found = pictures.meshes.find(desk.Documents().GetFileMesh(*model));
        if (found != pictures.meshes.end())
            geometry->SetAppearance(found->second);
    }
    desk.Session().GetViewer().Invalidate();
}
