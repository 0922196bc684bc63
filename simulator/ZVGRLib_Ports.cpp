#include "simulator/Status.h"

#include "zvgr/ZVGRLib.h"

using namespace zvsim;

namespace {

// These grabbers and cameras have neither registers nor a description of them: nothing is transferred.
template <class Size>
uint32_t transfer_nothing(Size* size)
{
    if (size != nullptr)
        *size = 0;
    return status_unsupported;
}

} // namespace

uint32_t ZVGR_GrabberReadReg(uint32_t /*grabber*/, uint64_t /*address*/, void* /*buffer*/, uint32_t* size)
{
    return transfer_nothing(size);
}

uint32_t ZVGR_GrabberWriteReg(uint32_t /*grabber*/, uint64_t /*address*/, const void* /*buffer*/,
                              uint32_t* size)
{
    return transfer_nothing(size);
}

uint32_t ZVGR_CameraReadReg(uint32_t /*camera*/, uint64_t /*address*/, void* /*buffer*/, uint32_t* size)
{
    return transfer_nothing(size);
}

uint32_t ZVGR_CameraWriteReg(uint32_t /*camera*/, uint64_t /*address*/, const void* /*buffer*/,
                             uint32_t* size)
{
    return transfer_nothing(size);
}

uint32_t ZVGR_GetXmlUrl(uint32_t /*handle*/, char* /*url*/, uint64_t* size) { return transfer_nothing(size); }
