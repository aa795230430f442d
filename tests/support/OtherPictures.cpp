#include "OtherPictures.h"

#include <OpenImageIO/imageio.h>

bool writeOtherPicture(std::filesystem::path const& file, int width, int channels, int bits,
                       std::string const& samples,
                       std::map<std::string, std::string> const& attributes)
{
    OIIO::TypeDesc const type = bits == 8 ? OIIO::TypeDesc::UINT8 : OIIO::TypeDesc::UINT16;
    int const rows = static_cast<int>(samples.size()) / (width * channels * bits / 8);
    OIIO::ImageSpec spec(width, rows, channels, type);
    spec.attribute("oiio:UnassociatedAlpha", 1);
    for (auto const& [name, text] : attributes) {
        spec.attribute(name, text);
    }
    auto const output = OIIO::ImageOutput::create(file.string());
    return output && output->open(file.string(), spec) &&
           output->write_image(type, samples.data()) && output->close();
}

void loadAttributesOfOther(std::filesystem::path const& file,
                           std::map<std::string, std::string>& attributes)
{
    auto const input = OIIO::ImageInput::open(file.string());
    if (input != nullptr) {
        attributes["type"] = input->spec().format.c_str();
        for (OIIO::ParamValue const& attribute : input->spec().extra_attribs) {
            attributes[attribute.name().string()] = attribute.get_string();
        }
    }
}
