#include "faults/Worlds.h"

#include "offline/StoreSupport.h"

#include <stdexcept>

namespace Worlds {

namespace {

// A world that is not what it is said to be makes every comparison worthless.
void Must(unsigned int code)
{
    if (code != 0) {
        throw std::logic_error("preparing a world failed: " + std::to_string(code));
    }
}

void Select(TWorld& world, const char* key)
{
    Must(world.object->SetExposureAndIntensity(3.0f, 50.0f));
    Must(world.object->SetCorrectionLevel(80));
    Must(world.object->SetActiveCorrection(key));
}

} // namespace

void FillProcessorFolder()
{
    TWorld world;
    world.MakeProcessor();
    Must(AddEven(*world.object, "first", 4, 1, 10));
    Must(world.object->SaveFile("one"));
    Must(AddEven(*world.object, "second", 2, 1, 20));
    Must(AddEven(*world.object, "third", 1, 3, 30));
    Must(world.object->SaveFile("three"));
    Must(world.Processor().SaveGroupedFile("grouped", {"a name of more than sixteen characters", "B"}));
}

void MakeProcessor(TWorld& world)
{
    world.MakeProcessor();
    Must(AddEven(*world.object, "dark", 3, 2, 100));
    Must(AddEven(*world.object, "flat", 2, 2, 200));
    Select(world, "dark");
    world.source = CreateBackgroundCorrection();
    Must(AddEven(*world.source, "new", 5, 1, 300));
    Must(AddEven(*world.source, "Dark", 4, 3, 400));
    Must(AddEven(*world.source, "newer", 1, 1, 500));
}

void MakeManyCorrections(TWorld& world)
{
    world.MakeProcessor();
    for (int i = 0; i < 16; ++i) {
        Must(AddEven(*world.object, ("key " + std::to_string(i)).c_str(), 1, 1, 7));
    }
}

void MakeHeaderOnlyProcessor(TWorld& world)
{
    MakeProcessor(world);
    Must(world.object->LoadFileHeaderOnly("three"));
}

void FillStoreFolder()
{
    const std::vector<std::string> names = {"A", "B"};
    const auto write = [&names](const char* name, const std::vector<StoreFiles::TCorrection>& corrections) {
        FileBytes::WriteFile(name, StoreFiles::Grouped(names, corrections));
    };
    write("st_A_1_B_1", {StoreFiles::Flat("A,1,B,1,a", 100), StoreFiles::Flat("A,1,B,1,b", 110)});
    write("st_A_2_B_2", {StoreFiles::Flat("A,2,B,2", 200)});
    write("st_A_3_B_3", {StoreFiles::Flat("A,3,B,3", 300)});
    write("old_A_1_B_1", {StoreFiles::Flat("A,1,B,1,old", 1)});
    write("old_A_9_B_9", {StoreFiles::Flat("A,9,B,9,old", 9)});
    FileBytes::WriteFile("ungrouped",
                         StoreFiles::Ungrouped({StoreFiles::Flat("A,5,B,5", 50), StoreFiles::Flat("A,6,B,6", 60)}));
}

void MakeEmptyStore(TWorld& world)
{
    world.MakeStore();
}

void MakeFreshStore(TWorld& world)
{
    world.MakeStore();
    Must(AddEven(*world.object, "A,7,B,7,first", 2, 1, 70));
    Must(AddEven(*world.object, "A,8,B,8", 2, 2, 80));
    Must(AddEven(*world.object, "A,7,B,7,second", 1, 2, 71));
    Select(world, "A,8,B,8");
}

void MakeNamedStore(TWorld& world)
{
    world.MakeStore();
    Must(world.object->LoadFile("st"));
    Must(AddEven(*world.object, "A,1,B,1,new", 3, 1, 120));
    Select(world, "A,1,B,1,b");
}

void MakeHeaderOnlyStore(TWorld& world)
{
    world.MakeStore();
    Must(world.object->LoadFileHeaderOnly("st"));
    Must(world.object->SetActiveCorrection("A,1,B,1,a"));
}

void AddProcessorSource(TWorld& world)
{
    world.source = CreateBackgroundCorrection();
    Must(AddEven(*world.source, "A,1,B,1,a", 2, 2, 1000));
    Must(AddEven(*world.source, "A,4,B,4", 1, 1, 4000));
    Must(AddEven(*world.source, "A,2,B,2,new", 1, 2, 2000));
}

void AddStoreSource(TWorld& world)
{
    TWorld other;
    other.MakeStore();
    Must(AddEven(*other.object, "A,1,B,1,a", 2, 2, 1000));
    Must(AddEven(*other.object, "A,4,B,4", 1, 1, 4000));
    Must(other.object->SaveFile("source"));
    Must(AddEven(*other.object, "A,2,B,2,new", 1, 2, 2000)); // not written yet
    std::swap(world.source, other.object);
}

const unsigned short** Frames()
{
    static const unsigned short first[9] = {10, 20, 30, 40, 50, 60, 70, 80, 90};
    static const unsigned short second[9] = {12, 22, 32, 42, 52, 62, 72, 82, 92};
    static const unsigned short* frames[2] = {first, second};
    return frames;
}

} // namespace Worlds
