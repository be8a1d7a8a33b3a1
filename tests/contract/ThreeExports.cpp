// A library with three of the four exports: what a host meets that is handed another file by mistake. None is called.
#ifdef _WIN32
#define QXBC_TEST_EXPORT __declspec(dllexport)
#else
#define QXBC_TEST_EXPORT
#endif

extern "C" {

QXBC_TEST_EXPORT void CreateBackgroundCorrection() {}
QXBC_TEST_EXPORT void DeleteBackgroundCorrection() {}
QXBC_TEST_EXPORT void GetLastBackgroundCorrectionDLLError() {}
}
