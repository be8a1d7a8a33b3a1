// A host built with Microsoft's compiler, as far as exceptions go: contract_exception_host <library>. The library runs
// out of memory at every request in turn, and the host catches what comes by its own std::exception and std::bad_alloc:
// by reference, by value, copied, kept, rethrown.
#include "FailingMemory.h"
#include "MicrosoftExceptions.h"
#include "QX_BackgroundCorrection.h"

#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <windows.h>

// A runtime of its own: with the operators of the library's build its exceptions would come along. Nothing uses these.
void* operator new(size_t size)
{
    return HostHeap::Allocate(size);
}
void operator delete(void*) noexcept {}
void operator delete(void*, size_t) noexcept {}

namespace {

using QX_KRLSDK::QX_IBackgroundCorrection;

constexpr char kFileName[] = "contract-exceptions";
constexpr char kGroupFileName[] = "contract-exceptions_Camera_1"; // of a store of that name
constexpr char kCopyFailed[] = "Ran out of memory in Background correction construction.\n"
                               "Try restarting the application if the problem persists.";
constexpr char kImportFailed[] = "Could not allocate memory during import.";
constexpr char kBadAllocation[] = "bad allocation";
constexpr char kUnknown[] = "Unknown exception"; // a part without a text
constexpr uint32_t kSize = 24;

HMODULE library = nullptr;
unsigned int checksMade = 0;
unsigned int checksFailed = 0;

bool Check(bool holds, const char* operation, const char* way, const char* what)
{
    ++checksMade;
    if (!holds) {
        ++checksFailed;
        printf("FAILED  %s, %s: %s\n", operation, way, what);
        fflush(stdout);
    }
    return holds;
}

// What an operation works on.
struct TObjects {
    QX_KRLSDK::CreateBackgroundCorrectionFunction createLive;
    QX_KRLSDK::CreateBackgroundCorrectionOfflineFunction createStore;
    QX_KRLSDK::DeleteBackgroundCorrectionFunction destroy;
    QX_IBackgroundCorrection* source; // holds corrections
    QX_IBackgroundCorrection* target; // empty
};

QX_IBackgroundCorrection* CreateStore(const TObjects& objects)
{
    char name[] = "Camera";
    char* names[] = {name};
    return objects.createStore(names, 1);
}

struct TOperation {
    const char* name;
    void (*call)(const TObjects&);
    bool givesBadAlloc; // and else only the exception that has a text of its own
    bool onStores;
};

const TOperation kOperations[] = {
    {"ImportCorrections", [](const TObjects& objects) { objects.target->ImportCorrections(objects.source, false); },
     false, false},
    {"SaveFile", [](const TObjects& objects) { objects.source->SaveFile(kFileName); }, false, false},
    {"ImportCorrections of a store",
     [](const TObjects& objects) { objects.target->ImportCorrections(objects.source, false); }, true, true},
    {"SaveFile of a store", [](const TObjects& objects) { objects.source->SaveFile(kFileName); }, true, true},
    {"CreateBackgroundCorrection", [](const TObjects& objects) { objects.destroy(objects.createLive()); }, true, false},
    {"CreateBackgroundCorrectionOffline", [](const TObjects& objects) { objects.destroy(CreateStore(objects)); }, true,
     false},
};

// What a catch block found.
struct TCaught {
    bool any = false;
    bool isBadAlloc = false;
    char text[256] = {};
    std::exception kept; // outlives the exception
    bool isSound = true;

    // Looks at the layout first: a text that is not what it should be is not read.
    void Take(const std::exception& exception)
    {
        any = true;
        isSound = isSound && IsSound(exception);
        if (isSound)
            strncpy(text, exception.what(), sizeof text - 1);
    }
    // The part that this host has compiled in: no text, or one that stays, and nothing to be freed.
    static bool IsSound(const std::exception& exception)
    {
        HMODULE owner = nullptr;
        return !exception.IsTextOwned() &&
               (!exception.Text() || (GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                                             GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                                                         exception.Text(), &owner) &&
                                      owner == library));
    }
};

void ByReference(const TOperation& operation, const TObjects& objects, TCaught& caught)
{
    try {
        operation.call(objects);
    } catch (const std::bad_alloc& exception) {
        caught.isBadAlloc = true;
        caught.Take(exception);
    } catch (const std::exception& exception) {
        caught.Take(exception);
    }
}

void ByValue(const TOperation& operation, const TObjects& objects, TCaught& caught)
{
    try {
        operation.call(objects);
    } catch (std::exception exception) { // NOLINT: so do hosts
        caught.Take(exception);
    }
}

void AsBadAllocByValue(const TOperation& operation, const TObjects& objects, TCaught& caught)
{
    try {
        operation.call(objects);
    } catch (std::bad_alloc exception) { // NOLINT
        caught.isBadAlloc = true;
        caught.Take(exception);
    } catch (std::exception exception) { // NOLINT
        caught.Take(exception);
    }
}

void CopiedTwiceAndKept(const TOperation& operation, const TObjects& objects, TCaught& caught)
{
    try {
        operation.call(objects);
    } catch (std::exception exception) { // NOLINT
        const std::exception copy(exception);
        caught.kept = copy;
        caught.Take(copy);
    }
}

void ReferenceCopiedAndKept(const TOperation& operation, const TObjects& objects, TCaught& caught)
{
    try {
        operation.call(objects);
    } catch (const std::exception& exception) {
        caught.kept = exception;
        caught.Take(caught.kept);
    }
}

void RethrownByValue(const TOperation& operation, const TObjects& objects, TCaught& caught)
{
    try {
        try {
            operation.call(objects);
        } catch (std::exception exception) { // NOLINT
            TCaught ignored;
            ignored.Take(exception);
            caught.isSound = ignored.isSound;
            throw;
        }
    } catch (const std::bad_alloc& exception) {
        caught.isBadAlloc = true;
        caught.Take(exception);
    } catch (std::exception exception) { // NOLINT
        caught.Take(exception);
    }
}

void CopyThrownByTheHost(const TOperation& operation, const TObjects& objects, TCaught& caught)
{
    try {
        try {
            operation.call(objects);
        } catch (std::exception exception) { // NOLINT
            throw exception;                 // NOLINT: a copy, of the host's class
        }
    } catch (std::exception exception) { // NOLINT
        caught.Take(exception);
    }
}

struct TWay {
    const char* name;
    void (*run)(const TOperation&, const TObjects&, TCaught&);
    bool tellsBadAlloc;
    bool hasText; // the whole exception arrives, not its std::exception part alone
};

const TWay kWays[] = {
    {"by reference", ByReference, true, true},
    {"by value", ByValue, false, false},
    {"std::bad_alloc by value", AsBadAllocByValue, true, false},
    {"copied twice and kept", CopiedTwiceAndKept, false, false},
    {"by reference, copied and kept", ReferenceCopiedAndKept, false, false},
    {"rethrown, then by value", RethrownByValue, true, false},
    {"a copy thrown by the host", CopyThrownByTheHost, false, false},
};

// Fills the stack below with what is neither an address nor a cleared flag: an object that is caught by value and only
// partly written shows.
__attribute__((noinline)) void PaintStack()
{
    volatile unsigned char paint[1 << 14];
    for (volatile unsigned char& byte : paint)
        byte = 0xA5;
}

// The record of the exception that was thrown last, which says what a host's runtime copies, and how.
struct TCatchableType {
    uint32_t properties;
    uint32_t type;
    int32_t displacements[3];
    uint32_t size;
    uint32_t copyFunction;
};
struct TThrowInfo {
    uint32_t attributes;
    uint32_t destructor;
    uint32_t forwardCompatibility;
    uint32_t catchableTypes;
};
const TThrowInfo* lastThrown = nullptr;
const char* lastImage = nullptr;

LONG CALLBACK RememberThrow(EXCEPTION_POINTERS* pointers)
{
    constexpr DWORD kCppException = 0xE06D7363;
    const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
    if (record.ExceptionCode == kCppException && record.NumberParameters >= 4 &&
        record.ExceptionInformation[3] == reinterpret_cast<ULONG_PTR>(library) && record.ExceptionInformation[2] != 0) {
        lastThrown = reinterpret_cast<const TThrowInfo*>(record.ExceptionInformation[2]);
        lastImage = reinterpret_cast<const char*>(record.ExceptionInformation[3]);
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

void CheckThrowRecord(const TOperation& operation, const char* way)
{
    if (!Check(lastThrown != nullptr, operation.name, way, "an exception of the library was thrown"))
        return;
    const auto* const list = reinterpret_cast<const uint32_t*>(lastImage + lastThrown->catchableTypes);
    bool isException = false;
    Check(lastThrown->destructor != 0, operation.name, way, "the exception is destroyed");
    for (uint32_t i = 1; i <= list[0]; ++i) {
        const auto* const type = reinterpret_cast<const TCatchableType*>(lastImage + list[i]);
        const char* const name = lastImage + type->type + 2 * sizeof(void*);
        const bool isBase = strcmp(name, ".?AVexception@std@@") == 0;
        if (isBase || strcmp(name, ".?AVbad_alloc@std@@") == 0) {
            isException = isException || isBase;
            Check(type->size == kSize, operation.name, way, "the record gives the size of the host's class");
            Check(type->displacements[0] == 0, operation.name, way, "the part begins where the exception begins");
            // Copied byte by byte, a part would keep the table of the whole.
            Check(type->copyFunction != 0, operation.name, way, "the record names a function that copies");
        }
    }
    Check(isException, operation.name, way, "the exception is a std::exception");
}

__attribute__((noinline)) void CheckCaught(const TOperation& operation, const TWay& way, const TCaught& caught)
{
    const bool isSound =
        Check(caught.isSound && TCaught::IsSound(caught.kept), operation.name, way.name, "text and flag are sound");
    Check(HostHeap::foreignBlocksFreed == 0, operation.name, way.name, "the host frees only its own texts");
    HostHeap::foreignBlocksFreed = 0;
    CheckThrowRecord(operation, way.name);
    const bool isOwnText = strcmp(caught.text, kCopyFailed) == 0 || strcmp(caught.text, kImportFailed) == 0;
    const bool isBadAllocation = strcmp(caught.text, kBadAllocation) == 0;
    if (way.tellsBadAlloc)
        Check(caught.isBadAlloc == isBadAllocation, operation.name, way.name, "std::bad_alloc is caught as such");
    if (!operation.givesBadAlloc)
        Check(!isBadAllocation, operation.name, way.name, "the exception is the one with the text");
    Check(isBadAllocation || (way.hasText ? isOwnText : strcmp(caught.text, kUnknown) == 0), operation.name, way.name,
          "the text is the one that arrives this way");
    Check(!isSound || !caught.kept.Text() || strcmp(caught.kept.what(), caught.text) == 0, operation.name, way.name,
          "what was kept still says so after the exception is gone");
}

void MakeObjects(const TOperation& operation, const char* way, TObjects& objects)
{
    const unsigned short frame[64] = {1, 2, 3};
    const unsigned short* frames[] = {frame};
    objects.source = operation.onStores ? CreateStore(objects) : objects.createLive();
    objects.target = operation.onStores ? CreateStore(objects) : objects.createLive();
    static const char* const kKeys[] = {"Camera,1,first", "Camera,1,second"};
    for (const char* key : kKeys)
        Check(objects.source->AddCorrection(key, frames, 1, 8, 8, 1.0f, 1.0f) == 0, operation.name, way,
              "a correction is added");
}

void DestroyObjects(const TOperation& operation, const char* way, const TObjects& objects)
{
    Check(objects.destroy(objects.source) == 0, operation.name, way, "the source can be deleted");
    Check(objects.destroy(objects.target) == 0, operation.name, way, "the target can be deleted");
    remove(kFileName);
    remove(kGroupFileName);
}

// Refuses the library each request for memory in turn until the operation needs no more.
void RunOutOfMemory(const TOperation& operation, const TWay& way, TObjects objects, bool andAllLater)
{
    unsigned int thrown = 0;
    bool isOver = false;
    for (unsigned int request = 1; !isOver && request < 10000; ++request) {
        MakeObjects(operation, way.name, objects);
        TCaught caught;
        PaintStack();
        lastThrown = nullptr;
        FailingMemory::Refuse(request, andAllLater);
        way.run(operation, objects, caught);
        isOver = !FailingMemory::HasRefused();
        FailingMemory::Refuse(0, false);
        DestroyObjects(operation, way.name, objects);
        if (caught.any) {
            ++thrown;
            CheckCaught(operation, way, caught);
        }
        Check(!isOver || !caught.any, operation.name, way.name, "nothing is thrown with memory");
    }
    Check(isOver, operation.name, way.name, "the operation needs no end of memory");
    Check(thrown > 0, operation.name, way.name, "an exception came");
}

template <class TExport> void Find(const char* name, TExport& function)
{
    function = reinterpret_cast<TExport>(reinterpret_cast<void (*)()>(GetProcAddress(library, name)));
}

} // namespace

int main(int argumentCount, char** arguments)
{
    library = argumentCount == 2 ? LoadLibraryA(arguments[1]) : nullptr;
    if (!library) {
        printf("usage: contract_exception_host <library>\n");
        return 2;
    }
    TObjects objects{};
    Find("CreateBackgroundCorrection", objects.createLive);
    Find("CreateBackgroundCorrectionOffline", objects.createStore);
    Find("DeleteBackgroundCorrection", objects.destroy);
    if (objects.createLive && objects.createStore && objects.destroy &&
        Check(FailingMemory::Install(library), "loading", "imports", "all memory of the library can be refused")) {
        AddVectoredExceptionHandler(1, RememberThrow);
        for (const TOperation& operation : kOperations)
            for (const TWay& way : kWays) {
                RunOutOfMemory(operation, way, objects, false);
                RunOutOfMemory(operation, way, objects, true);
            }
    } else {
        ++checksFailed;
    }
    printf("%u checks, %u failed\n", checksMade, checksFailed);
    return checksFailed == 0 ? 0 : 1;
}
