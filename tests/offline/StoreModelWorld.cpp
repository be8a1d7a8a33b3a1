#include "offline/StoreModelWorld.h"

#include "platform/FolderSearch.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <utility>

namespace fs = std::filesystem;

namespace {

const char* const kKindNames[] = {"Add",
                                  "Select",
                                  "SelectNothing",
                                  "SelectHandedOut",
                                  "Delete",
                                  "DeleteHandedOut",
                                  "Clear",
                                  "SetLevel",
                                  "SetExposure",
                                  "SetRegion",
                                  "Apply",
                                  "Import",
                                  "Save",
                                  "SaveHandedOut",
                                  "Load",
                                  "LoadHandedOut",
                                  "LoadHeaderOnly",
                                  "Message",
                                  "MakeAnew",
                                  "AddLive",
                                  "DeleteLive",
                                  "LoadLive",
                                  "LoadLiveHeaderOnly",
                                  "WriteUngrouped",
                                  "WriteForeign",
                                  "WriteOddSizes",
                                  "Truncate",
                                  "SpoilVersion",
                                  "CopyFile",
                                  "RemoveFile",
                                  "MakeFolder",
                                  "HideFolder",
                                  "ShowFolder"};
static_assert(sizeof kKindNames / sizeof *kKindNames == static_cast<std::size_t>(TKind::kCount));

std::string NameOf(TKind kind)
{
    return kKindNames[static_cast<std::size_t>(kind)];
}

} // namespace

std::string Describe(const TOperation& operation)
{
    std::ostringstream line;
    line << NameOf(operation.kind) << " store " << operation.store << " '"
         << (operation.text.size() < 100
                 ? operation.text
                 : operation.text.substr(0, 40) + "..." + operation.text.substr(operation.text.size() - 4) + " of " +
                       std::to_string(operation.text.size()))
         << "'";
    for (const int number : operation.numbers) {
        line << ' ' << number;
    }
    line << " bits " << operation.bits;
    return line.str();
}

TStoreModelWorld::TStoreModelWorld(const std::string& parentFolder) : folder(parentFolder), disk(folder.Path())
{
    disk.order = [this](const std::string& below, std::vector<std::string>& names) { Sort(below, names); };
}

void TStoreModelWorld::Begin(const TSequence& sequence)
{
    for (const auto& entry : fs::directory_iterator(folder.Path())) {
        fs::remove_all(entry.path());
    }
    disk.nodes.clear();
    for (const char* const name : {"cal", "f_A_x"}) {
        folder.MakeFolder(name);
        disk.nodes[name] = std::nullopt;
    }
    groupingNames = sequence.groupingNames;
    for (std::size_t i = 0; i < 2; ++i) {
        stores[i] = std::make_unique<TTestStore>(groupingNames[i]);
        models[i] = std::make_unique<Literal::TStore>(disk);
        models[i]->SetGroupingParameters(groupingNames[i], static_cast<int>(groupingNames[i].size()));
        models[i]->message.clear(); // TTestStore takes its text away as well
    }
    live = std::make_unique<TTestObject>();
    liveModel = Literal::TProcessor();
}

std::string TStoreModelWorld::Run(const TSequence& sequence, std::size_t& failedAt)
{
    Begin(sequence);
    stopped = false;
    for (failedAt = 0; failedAt < sequence.operations.size(); ++failedAt) {
        const std::string difference = Do(sequence.operations[failedAt]);
        if (stopped) {
            ++cutShort;
            return std::string();
        }
        if (!difference.empty()) {
            return difference;
        }
    }
    return std::string();
}

TStoreModelWorld::TOrders TStoreModelWorld::FolderOrders() const
{
    std::vector<std::string> folders = {""};
    for (const auto& [path, node] : disk.nodes) {
        if (!node.has_value()) {
            folders.push_back(path);
        }
    }
    TOrders result;
    for (const std::string& path : folders) {
        std::u16string specification(path.begin(), path.end());
        specification += path.empty() ? u"*" : u"\\*";
        for (Platform::TFolderSearch search(specification); search.HasName(); search.Next()) {
            const std::u16string name = search.Name();
            std::string narrow;
            for (const char16_t character : name) {
                narrow.push_back(static_cast<char>(character));
            }
            result[path].push_back(narrow);
        }
    }
    return result;
}

// Gives names the order that the folder has now; those that have gone meanwhile follow the name that they followed.
void TStoreModelWorld::Sort(const std::string& below, std::vector<std::string>& names)
{
    const std::vector<std::string>& before = ordersBefore[below];
    std::vector<std::string> order = ordersAfter[below];
    const auto has = [](const std::vector<std::string>& list, const std::string& name) {
        return std::find(list.begin(), list.end(), name) != list.end();
    };
    bool came = false;
    bool went = false;
    for (const std::string& name : names) {
        came = came || !has(before, name);
        went = went || !has(order, name);
    }
    orderIsUncertain = orderIsUncertain || (came && went);
    auto position = order.begin();
    for (const std::string& name : before) {
        const auto found = std::find(order.begin(), order.end(), name);
        position = found != order.end() ? found + 1 : order.insert(position, name) + 1;
    }
    const auto rank = [&order](const std::string& name) {
        return std::make_pair(std::find(order.begin(), order.end(), name), name);
    };
    std::sort(names.begin(), names.end(),
              [&rank](const std::string& left, const std::string& right) { return rank(left) < rank(right); });
}

std::string TStoreModelWorld::Do(const TOperation& operation)
{
    const std::size_t i = static_cast<std::size_t>(operation.store);
    if (operation.kind >= TKind::kAddLive) {
        return DoToDisk(operation);
    }
    if (operation.kind == TKind::kApply) {
        return Apply(operation) + CompareState(operation.store, operation.bits);
    }
    if (operation.kind == TKind::kMakeAnew) { // writes nothing
        stores[i] = nullptr;
        stores[i] = std::make_unique<TTestStore>(groupingNames[i]);
        models[i] = std::make_unique<Literal::TStore>(disk);
        models[i]->SetGroupingParameters(groupingNames[i], static_cast<int>(groupingNames[i].size()));
        models[i]->message.clear();
        return CompareDisk();
    }
    const bool listsFolders = operation.kind >= TKind::kSave && operation.kind <= TKind::kLoadHeaderOnly;
    ordersBefore = listsFolders ? FolderOrders() : TOrders();
    const unsigned int result = DoToStore(operation, *stores[i]);
    ordersAfter = listsFolders ? FolderOrders() : TOrders();
    orderIsUncertain = false;
    const unsigned int expected = DoToModel(operation, *models[i]);
    seen.insert(NameOf(operation.kind) + " " + std::to_string(expected));
    if (const Literal::TProcessor* const processor = models[i]->processor.get()) {
        seen.insert(processor->message);
        if (processor->active != nullptr && std::isnan(processor->active->exposure)) {
            seen.insert("a reference that is no number");
        }
    }
    stopped = orderIsUncertain && (result != 0 || expected != 0);
    return Differing("Result", std::to_string(result), std::to_string(expected)) +
           CompareState(operation.store, operation.bits) +
           (operation.kind == TKind::kMessage ? std::string() : CompareDisk());
}
