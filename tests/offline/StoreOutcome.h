// What an operation of a store leaves.
#ifndef TESTS_OFFLINE_STOREOUTCOME_H
#define TESTS_OFFLINE_STOREOUTCOME_H

#include "offline/StoreSupport.h"
#include "support/TestObject.h"

// The code and the store's own text that an operation left.
inline TOutcome Left(const TTestStore& store, unsigned int code)
{
    return {code, store.Text()};
}

#endif
