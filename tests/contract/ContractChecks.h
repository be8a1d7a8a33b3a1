// The groups of checks that the contract host makes, and the exports they start from.
#ifndef QXBC_TESTS_CONTRACT_CHECKS_H
#define QXBC_TESTS_CONTRACT_CHECKS_H

#include "QX_BackgroundCorrection.h"

struct TExports {
    QX_KRLSDK::CreateBackgroundCorrectionFunction createLive;
    QX_KRLSDK::CreateBackgroundCorrectionOfflineFunction createOffline;
    QX_KRLSDK::DeleteBackgroundCorrectionFunction destroy;
    QX_KRLSDK::GetLastBackgroundCorrectionDLLErrorFunction lastError;

    QX_KRLSDK::QX_IBackgroundCorrection* CreateLive() const { return createLive(); }

    // A store with one grouping parameter, Camera.
    QX_KRLSDK::QX_IBackgroundCorrection* CreateStore() const
    {
        char name[] = "Camera";
        char* names[] = {name};
        return createOffline(names, 1);
    }
};

// Each by name and by position, on a live processor and on an offline store.
void CheckEverySlot(const TExports& exports);

// Every way to delete an object; what is not the library's is left alone. Must come first: it starts from an empty
// library error buffer.
void CheckLifetimes(const TExports& exports);

// The host's delegate is called by the positions in its table.
void CheckDelegates(const TExports& exports);

// Exhausted memory: the codes, the exceptions that reach the host, and what is left afterwards.
void CheckExhaustedMemory(const TExports& exports);

#ifdef _WIN32
// An object whose class was compiled with run-time type information switched off (ForeignObjectWithoutRtti.cpp).
QX_KRLSDK::QX_IBackgroundCorrection* MakeForeignObjectWithoutRtti(bool* destroyed);
#endif

#endif
