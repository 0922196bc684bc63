/* Compiled as strict C: both C interfaces can be used without C++. */
#include "GenTL/GenTL.h"
#include "zvgr/ZVGRLib.h"

#include <stddef.h>
#include <stdio.h>

/* A pointer type exists for every function; three of them stand for their kind of signature. */
static const PGCInitLib init_pointer = NULL;
static const PDSAnnounceBuffer announce_pointer = NULL;
static const PEventGetData data_pointer = NULL;

int main(void)
{
    printf("%d\n", init_pointer == NULL && announce_pointer == NULL && data_pointer == NULL);
    return 0;
}
