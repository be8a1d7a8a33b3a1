#ifndef QXBACKGROUND_IMAGES_TPNGREADER_H
#define QXBACKGROUND_IMAGES_TPNGREADER_H

#include "images/TImageReader.h"

#include <memory>

namespace workbench {

// Reads the one image of a 16-bit grayscale PNG.
class TPngReader : public TImageReader {
public:
    explicit TPngReader(const std::string& path);
    ~TPngReader() override;

    bool NextPage() override;
    void Read(TImage& image) override;
    TPageMetadata Metadata() override;
    bool SaysAllAtFirst() const override { return false; }

private:
    struct TDecoder;

    void Start();

    std::unique_ptr<TDecoder> decoder;
    std::string file; // its name, as the decoder opens it anew for each reading
    bool used = false;
};

} // namespace workbench

#endif
