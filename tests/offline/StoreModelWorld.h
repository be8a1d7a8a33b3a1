// Two stores, a live processor and a disk, each twice: the library's and the literal model's. Operations are done to
// both, and everything that a host can see is compared.
#ifndef TESTS_OFFLINE_STOREMODELWORLD_H
#define TESTS_OFFLINE_STOREMODELWORLD_H

#include "model/LiteralStore.h"
#include "offline/StoreSupport.h"
#include "support/TestObject.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

enum class TKind {
    kAdd,
    kSelect,
    kSelectNothing,
    kSelectHandedOut, // with the pointer that GetCorrectionKey gave
    kDelete,
    kDeleteHandedOut,
    kClear,
    kSetLevel,
    kSetExposure,
    kSetRegion,
    kApply,
    kImport,
    kSave,
    kSaveHandedOut,
    kLoad,
    kLoadHandedOut,
    kLoadHeaderOnly,
    kMessage,
    kMakeAnew,
    kAddLive,
    kDeleteLive,
    kLoadLive,
    kLoadLiveHeaderOnly,
    kWriteUngrouped, // operations on the disk behind the store's back
    kWriteForeign,
    kWriteOddSizes,
    kTruncate,
    kSpoilVersion,
    kCopyFile,
    kRemoveFile,
    kMakeFolder,
    kHideFolder,
    kShowFolder,
    kCount
};

// Exposures and intensities to choose from, and sizes of corrections in files.
constexpr int kFactorCount = 11;
constexpr int kCommonFactorCount = 6; // finite and no smaller than usual
constexpr int kTinyFactor = 6;        // its square is zero
constexpr int kOddSizeCount = 8;

struct TOperation {
    TKind kind = TKind::kMessage;
    int store = 0; // 0 or 1
    std::string text;
    std::array<int, 6> numbers{}; // as the kind wants them
    unsigned int bits = 0;        // which of the getters follow
};

std::string Describe(const TOperation& operation);

// Both texts with a remark about what differs; empty when they are equal.
std::string Differing(const std::string& what, const std::string& real, const std::string& model);

struct TSequence {
    std::array<std::vector<std::string>, 2> groupingNames; // of each store
    std::vector<TOperation> operations;
};

class TStoreModelWorld {
public:
    // Works in a temporary folder under `parentFolder`, or under the system's if that is empty.
    explicit TStoreModelWorld(const std::string& parentFolder);

    // Begins anew with empty disks and stores and does the operations in turn. Returns what differed at the first that
    // differed, or an empty text; `failedAt` is its position then.
    std::string Run(const TSequence& sequence, std::size_t& failedAt);

    // Sequences that ended early: an operation failed half way, and its listing held files that came or went within the
    // operation, so that nobody can say in which order the library saw them.
    int CutShort() const { return cutShort; }

    // "Save 769": every kind of operation with every result that it gave; every text of a loaded group.
    const std::set<std::string>& Seen() const { return seen; }

private:
    using TRealStore = std::unique_ptr<TTestStore>;
    using TOrders = std::map<std::string, std::vector<std::string>>; // names in each folder, as the system lists them

    void Begin(const TSequence& sequence);
    std::string Do(const TOperation& operation);
    static Literal::TAddition AdditionOf(const TOperation& operation);
    unsigned int DoToStore(const TOperation& operation, TTestStore& store);
    unsigned int DoToModel(const TOperation& operation, Literal::TStore& model);
    std::string DoToDisk(const TOperation& operation);
    std::string Apply(const TOperation& operation);
    std::string CompareState(int store, unsigned int bits);
    std::string CompareDisk() const;
    void WriteBoth(const std::string& name, const FileBytes::TBytes& bytes);
    TOrders FolderOrders() const;
    void Sort(const std::string& below, std::vector<std::string>& names);

    TStoreFolder folder;
    Literal::TProcessor liveModel;
    std::unique_ptr<TTestObject> live;
    TLiteralDisk disk;
    std::array<std::vector<std::string>, 2> groupingNames;
    std::array<TRealStore, 2> stores;
    std::array<std::unique_ptr<Literal::TStore>, 2> models;
    TOrders ordersBefore; // the operation at hand was done by the library
    TOrders ordersAfter;
    bool orderIsUncertain = false; // of a listing in between
    bool stopped = false;
    int cutShort = 0;
    std::set<std::string> seen;
};

#endif
