// Two live processors, two stores and the files between them, and whatever is done to them.
#ifndef FUZZ_OPERATIONWORLD_H
#define FUZZ_OPERATIONWORLD_H

#include "FuzzInput.h"
#include "ProcessorModel.h"

#include "QX_BackgroundCorrection.h"

#include "processor/TBackgroundCorrectionProcessorUINT16.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

// The processors are compared with a model after every operation, the stores with what always holds. Everything is
// drawn from the bytes of a fuzzer.
class TOperationWorld {
public:
    TOperationWorld(const std::uint8_t* data, std::size_t size);
    ~TOperationWorld();
    TOperationWorld(const TOperationWorld&) = delete;
    TOperationWorld& operator=(const TOperationWorld&) = delete;

    // Operates until the bytes are used up.
    void Run();

private:
    using QX_IBackgroundCorrection = QX_KRLSDK::QX_IBackgroundCorrection;
    using TCodes = std::set<unsigned int>;

    static constexpr int kMostOperations = 60;
    static constexpr std::size_t kProcessors = 2; // objects 0 and 1; the rest are stores
    static constexpr std::size_t kObjects = 4;

    static bool IsStore(std::size_t i) { return i >= kProcessors; }
    TProcessorModel& Model(std::size_t i) { return models[i]; }
    TBackgroundCorrectionProcessorUINT16& Processor(std::size_t i)
    {
        return static_cast<TBackgroundCorrectionProcessorUINT16&>(*objects[i]);
    }

    // Arguments.
    std::string Key();
    std::string Path();
    float Float();
    int Small();

    void Make(std::size_t i);
    void Operate(bool mayDelegate);
    void Add(std::size_t i);
    void SetActive(std::size_t i);
    void Delete(std::size_t i);
    void SetLevel(std::size_t i);
    void SetExposure(std::size_t i);
    void SetRegion(std::size_t i);
    void Apply(std::size_t i, bool mayDelegate);
    void Import(std::size_t i);
    void Load(std::size_t i, bool headerOnly);
    void Save(std::size_t i);
    void ChangeFiles();

    // What came out, against the model of a processor, or the codes that a store may give.
    void CheckResult(std::size_t i, unsigned int code, unsigned int modelCode, const TCodes& storeCodes) const;
    void Compare(std::size_t i);
    void CompareBackground(std::size_t i);
    std::vector<std::string> Keys(std::size_t i);

    TFuzzInput input;
    std::array<QX_IBackgroundCorrection*, kObjects> objects = {};
    std::array<TProcessorModel, kProcessors> models;
    std::array<std::vector<std::string>, kObjects> storeKeys;
};

#endif
