#include "simulator/PictureSource.h"

#include "simulator/Devices.h"
#include "simulator/pictures/FolderSource.h"
#include "simulator/pictures/PatternSource.h"

namespace zvsim {

std::unique_ptr<PictureSource> make_picture_source(const CameraDevice& camera)
{
    if (camera.model().pictures != nullptr)
        return std::make_unique<FolderSource>(camera, *camera.model().pictures);
    return std::make_unique<PatternSource>(camera);
}

} // namespace zvsim
