#ifndef QXBACKGROUND_IMAGES_TPAGEMETADATA_H
#define QXBACKGROUND_IMAGES_TPAGEMETADATA_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace workbench {

// What a header says of a setting where that cannot be one: "EXPTIME is 'unknown', not a number of seconds". Empty
// where it says nothing, or something that can.
struct TUnusableSettings {
    std::string exposure, gain, binning, celsius;
};

// What a page says beside its pixels, as far as it still holds for a corrected page of the same size and 16 bits. What
// describes how the pixels are stored (sizes, strips, BZERO, NAXIS) is the writer's matter and never in here.
struct TPageMetadata {
    // How the page was taken, for whoever corrects it: said by FITS cards, or by a description made of them.
    std::optional<double> exposureSeconds; // above 0 in single precision, which is the library's
    bool isUnexposed = false;              // it is said to be 0, as bias frames' is; so much is told apart, not scaled
    std::optional<double> gain;            // the camera's setting (GAIN), in whatever unit it counts
    std::optional<double> electronsPerAdu; // EGAIN
    std::optional<double> sensorCelsius;
    std::optional<int> binningX, binningY;
    std::optional<std::int64_t> takenDay; // since 1970-01-01
    TUnusableSettings unusable;
    // The bits that the file itself says are used, counted from the lowest; 0 when it does not say.
    int significantBits = 0;
    // The bits of the camera's values, where the file says that of the camera and not of these pixels alone.
    std::optional<int> cameraBits;

    // TIFF; PNG, SER and PGM fill what they have of it. An empty text is none.
    std::string description;
    std::string documentName, pageName, make, model, software, date, artist, hostComputer, copyright;
    struct TResolution {
        double x = 0, y = 0;
        int unit = 2; // as TIFF counts: 1 none, 2 inch, 3 centimetre
    };
    std::optional<TResolution> resolution;
    std::optional<double> xPosition, yPosition; // in units of the resolution
    int orientation = 0;                        // as TIFF counts, 1 to 8; 0 when not said
    std::vector<std::uint8_t> iccProfile;
    std::vector<std::uint8_t> xmp;

    // FITS: each as it stands in the file, 80 characters.
    std::vector<std::string> cards;
    // What was done to the page here, as cards. In a TIFF they stand behind the description.
    std::vector<std::string> record;
    // Where the page is one of a cube's planes: which one, from 1, of how many. A FITS writer keeps cubes together.
    int plane = 0, planes = 0;
};

} // namespace workbench

#endif
