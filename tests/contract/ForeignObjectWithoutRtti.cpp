// Compiled with run-time type information switched off, which the contract of the Windows DLL allows for.
#include "ContractChecks.h"
#include "ForeignObject.h"

QX_KRLSDK::QX_IBackgroundCorrection* MakeForeignObjectWithoutRtti(bool* destroyed)
{
    return new TForeignObject<struct TWithoutRtti>(destroyed);
}
