#include "simulator/PictureSource.h"

#include "simulator/FolderSource.h"
#include "simulator/Model.h"
#include "simulator/PatternSource.h"

namespace zvsim {

std::unique_ptr<PictureSource> make_picture_source(const CameraModel& camera)
{
    if (camera.pictures != nullptr)
        return std::make_unique<FolderSource>(*camera.pictures);
    return std::make_unique<PatternSource>(camera);
}

} // namespace zvsim
