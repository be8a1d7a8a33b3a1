// Long paths and names of any bytes. Names are bytes for the library: it neither knows nor asks for an encoding.
#include "platform/RawFile.h"
#include "support/TemporaryFolder.h"
#include "surroundings/SurroundingsWorkload.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <filesystem>

namespace fs = std::filesystem;
using namespace Surroundings;

namespace {

class SurroundingsPaths : public testing::Test {
protected:
    SurroundingsPaths()
    {
        AddFlat(*processor, "dark", 1);
        AddFlat(*store, "A,1", 100);
        AddFlat(*store, "A,2", 200);
    }

    // Folders within folders, until the path with a file name of `nameLength` has exactly this length.
    std::string DeepPath(std::size_t length, std::size_t nameLength) const
    {
        std::string path = folder.Path();
        while (path.size() + 1 + nameLength < length) {
            const std::size_t rest = length - nameLength - 1 - path.size();
            path += "/" + std::string(rest > 300 ? 200 : rest - 1, 'd');
            fs::create_directory(path);
        }
        return path + "/" + std::string(nameLength, 'f');
    }

    const TTemporaryFolder folder;
    const TObject processor = MakeProcessor();
    const TObject store = MakeStore({"A"});
};

TEST_F(SurroundingsPaths, OfTheGreatestLengthAreTaken)
{
    const std::string path = DeepPath(PATH_MAX - 1, 20); // the terminator counts as well
    ASSERT_EQ(path.size(), std::size_t{PATH_MAX - 1});
    EXPECT_EQ(processor->SaveFile(path.c_str()), 0u);
    EXPECT_EQ(processor->LoadFile(path.c_str()), 0u);
    EXPECT_EQ(processor->GetNumberOfCorrections(), 1u);

    const std::string base = DeepPath(PATH_MAX - 1 - 4, 30); // and "_A_1"
    EXPECT_EQ(store->SaveFile(base.c_str()), 0u);
    EXPECT_EQ(store->GetNumberOfCorrections(), 2u);
    EXPECT_EQ(store->SetActiveCorrection("A,2"), 0u);
    EXPECT_EQ(FlatBackground(*store), 200);
}

TEST_F(SurroundingsPaths, ThatAreTooLongAreRefusedAndLoseNothing)
{
    for (const std::size_t length : {std::size_t{PATH_MAX}, std::size_t{PATH_MAX} + 1, std::size_t{100000}}) {
        const std::string path = folder.Path() + std::string(length - folder.Path().size(), '/') + "f";
        EXPECT_FALSE(Platform::PathExists(path.c_str()));
        EXPECT_FALSE(Platform::RemoveFile(path.c_str()));
        EXPECT_EQ(processor->SaveFile(path.c_str()), 769u);
        EXPECT_EQ(processor->GetLastErrorMessage(), ("Could not create file - '" + path).substr(0, 256));
        EXPECT_EQ(processor->LoadFile(path.c_str()), 769u);
        EXPECT_EQ(processor->GetLastErrorMessage(), ("Could not open file - '" + path).substr(0, 256));
        EXPECT_EQ(processor->GetNumberOfCorrections(), 1u);
        EXPECT_EQ(store->LoadFile(path.c_str()), 771u);
        EXPECT_EQ(store->SaveFile(path.c_str()), 769u);
        EXPECT_EQ(store->GetNumberOfCorrections(), 2u);
    }
}

TEST_F(SurroundingsPaths, NamesOf255BytesAreTakenAndFound)
{
    const std::string name(255, 'n');
    EXPECT_EQ(processor->SaveFile(folder.File(name).c_str()), 0u);
    EXPECT_EQ(processor->LoadFile(folder.File(name).c_str()), 0u);
    const std::string base(251, 's'); // 255 with "_A_1"
    EXPECT_EQ(store->SaveFile(folder.File(base).c_str()), 0u);
    EXPECT_EQ(store->GetNumberOfCorrections(), 2u);
    EXPECT_EQ(store->SetActiveCorrection("A,1"), 0u);
    EXPECT_EQ(FlatBackground(*store), 100);
}

TEST_F(SurroundingsPaths, NamesThatAreTooLongAreRefused)
{
    EXPECT_EQ(processor->SaveFile(folder.File(std::string(256, 'n')).c_str()), 769u);
    EXPECT_EQ(processor->LoadFile(folder.File(std::string(256, 'n')).c_str()), 769u);
    EXPECT_EQ(store->LoadFile(folder.File(std::string(256, 's')).c_str()), 771u);
    EXPECT_EQ(store->SaveFile(folder.File(std::string(252, 's')).c_str()), 769u); // 256 with "_A_1"
    EXPECT_TRUE(fs::is_empty(folder.Path()));
    EXPECT_EQ(store->GetNumberOfCorrections(), 2u);
    EXPECT_EQ(store->SaveFile(folder.File("s").c_str()), 0u); // the host may choose another
    EXPECT_EQ(store->GetNumberOfCorrections(), 2u);
}

// As with every other failure to write a group that is switched away from: the switch goes on.
TEST_F(SurroundingsPaths, AGroupWhoseNameIsTooLongIsLostWhenAnotherIsChosen)
{
    ASSERT_EQ(store->SaveFile(folder.File(std::string(251, 's')).c_str()), 0u);
    ASSERT_EQ(AddFlat(*store, "A,345", 300), 0u);
    EXPECT_EQ(store->SaveFile(folder.File(std::string(251, 's')).c_str()), 769u); // whoever saves is told
    EXPECT_EQ(store->SetActiveCorrection("A,1"), 0u);
    EXPECT_EQ(store->SetActiveCorrection("A,345"), 513u);
}

// In UTF-8, in an 8-bit encoding, and in none.
TEST_F(SurroundingsPaths, NamesOfAnyBytesAreTakenAndFound)
{
    const char* const kNames[] = {"Gr\xC3\xB6\xC3\x9F"
                                  "e \xE6\x9A\x97",
                                  "Gr\xF6\xDF"
                                  "e",
                                  "\x80\xFF\xFE\x01", "%s%n 100%"};
    for (const std::string name : kNames) {
        const fs::path below = fs::path(folder.Path()) / name;
        fs::create_directory(below);
        const std::string path = (below / name).string();
        EXPECT_EQ(processor->SaveFile(path.c_str()), 0u);
        EXPECT_EQ(processor->LoadFile(path.c_str()), 0u);
        EXPECT_EQ(processor->LoadFile((path + "?").c_str()), 769u);
        EXPECT_EQ(processor->GetLastErrorMessage(), "Could not open file - '" + path + "?'");

        const TObject named = MakeStore({name});
        ASSERT_EQ(AddFlat(*named, name + ",\xE4\xC3\xA4", 100), 0u);
        ASSERT_EQ(AddFlat(*named, name + ",2", 200), 0u);
        EXPECT_EQ(named->SaveFile((path + "s").c_str()), 0u);
        EXPECT_TRUE(fs::exists(path + "s_" + name + "_\xE4\xC3\xA4"));
        const TObject again = MakeStore({"other"});
        EXPECT_EQ(again->LoadFile((path + "s_" + name + "_2").c_str()), 0u);
        EXPECT_EQ(again->GetNumberOfCorrections(), 2u);
        EXPECT_EQ(again->SetActiveCorrection((name + ",\xE4\xC3\xA4").c_str()), 0u);
        EXPECT_EQ(FlatBackground(*again), 100);
    }
}

// A text is cut at 256 bytes, wherever that is in a character.
TEST_F(SurroundingsPaths, ALongNameInUtf8IsCutBetweenBytes)
{
    std::string path = folder.File("x");
    while (path.size() < 400) {
        path += "\xC3\xA4";
    }
    EXPECT_EQ(processor->LoadFile(path.c_str()), 769u);
    EXPECT_EQ(processor->GetLastErrorMessage(), ("Could not open file - '" + path).substr(0, 256));
}

} // namespace
