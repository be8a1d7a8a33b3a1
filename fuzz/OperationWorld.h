// Two live processors, two stores and the files between them, and whatever is done to them.
#ifndef FUZZ_OPERATIONWORLD_H
#define FUZZ_OPERATIONWORLD_H

#include "FuzzInput.h"

#include "QX_BackgroundCorrection.h"

#include "model/LiteralStore.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

// Everything is drawn from the bytes of a fuzzer and done twice: to the library's objects and files, and to those of
// the literal model. What a host can see of both is compared after every operation.
class TOperationWorld {
public:
    TOperationWorld(const std::uint8_t* data, std::size_t size);
    ~TOperationWorld();
    TOperationWorld(const TOperationWorld&) = delete;
    TOperationWorld& operator=(const TOperationWorld&) = delete;

    // Operates until the bytes are used up, or a file takes too long to be read literally.
    void Run();

private:
    using QX_IBackgroundCorrection = QX_KRLSDK::QX_IBackgroundCorrection;

    static constexpr int kMostOperations = 60;
    static constexpr std::size_t kProcessors = 2; // objects 0 and 1; the rest are stores
    static constexpr std::size_t kObjects = 4;

    static bool IsStore(std::size_t i) { return i >= kProcessors; }
    Literal::TStore& Store(std::size_t i) { return *stores[i - kProcessors]; }
    // The model's live processor, or that of its store's group; null when there is none.
    Literal::TProcessor* Processor(std::size_t i) { return IsStore(i) ? Store(i).processor.get() : &processors[i]; }
    // Does something to the model of an object: a processor and a store have the same operations.
    template <typename TAction> auto WithModel(std::size_t i, const TAction& action)
    {
        return IsStore(i) ? action(Store(i)) : action(processors[i]);
    }

    // Arguments.
    std::string Key();
    std::string Path();
    float Float();
    int Small();

    void Make(std::size_t i);
    void Operate(bool mayDelegate);
    void OperateDecided(bool mayDelegate);
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
    void Write(const std::string& path, const Literal::TBytes& bytes); // to both disks

    void Compare(std::size_t i);
    template <typename TModel> void CompareGetters(QX_IBackgroundCorrection& object, TModel& model);
    void CompareTexts(std::size_t i);
    void CompareBackground(std::size_t i);
    // Checks of the library alone leave texts that the model takes over.
    void TakeTexts(std::size_t i);

    TFuzzInput input;
    TLiteralDisk disk; // the model's
    std::array<QX_IBackgroundCorrection*, kObjects> objects = {};
    std::array<Literal::TProcessor, kProcessors> processors;
    std::array<std::unique_ptr<Literal::TStore>, kObjects - kProcessors> stores;
    bool undecided = false;
};

#endif
