// qxbackground store show: one correction of a store in numbers, as a histogram and as a picture.
#include "verbs/ShowCorrection.h"
#include "verbs/StoreVerbs.h"

#include <memory>

namespace workbench {

namespace {

struct TStoreShowOptions {
    TStoreOptions store;
    TShowOptions show;
};

void ShowInStore(const TContext& context, const TStoreShowOptions& options)
{
    const TStorePlace place = FindStore(options.store.base, options.store.groups);
    QX_KRLSDK::TBackgroundCorrection object = OpenInStore(context, place, options.show.key);
    ShowCorrection(object, place.PathOf(GroupFileOf(place, options.show.key)).string(), options.show);
}

} // namespace

void AddStoreShowVerb(TVerb& store, const TContext& context)
{
    TVerb& verb = store.AddVerb("show", "Show one correction of a store: statistics, histogram, picture");
    const auto options = std::make_shared<TStoreShowOptions>();
    AddStoreOptions(verb, options->store, TPathUse::Reads);
    AddShowOptions(verb, options->show);
    verb.Run([&context, options] { ShowInStore(context, *options); });
}

} // namespace workbench
