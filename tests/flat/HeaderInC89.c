/* A host in the oldest C: the flat header comes first, alone, and twice. Only compiled. */
#include "QX_BackgroundCorrection_C.h"

int main(void)
{
    QXBC_Object* object = 0;
    return QXBC_CreateProcessor(&object) == QXBC_SUCCESS && QXBC_Delete(object) == QXBC_SUCCESS ? 0 : 1;
}
