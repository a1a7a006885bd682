#pragma once

#include "qrn/IDocument.h"
#include "qrngl/Camera.h"

#include <functional>
#include <memory>
#include <string>

namespace qrnviewer {

class Explosion;

// A scene state as a readable text file: the camera, which parts are shown, their colours and
// transparency, the cut and the exploded level. Saving writes a new file and renames it over
// the old, so that a crash never leaves half a state; loading checks the whole file against
// the model before it changes anything.
class SceneState {
public:
    // explode: the viewer's exploded view (its level is saved and restored); may be null.
    SceneState(std::shared_ptr<qrn::IDocument> document, Explosion* explode);

    bool save(const std::string& path, std::string& error) const;
    // False with a reason naming the file (and line) when it is no state of this model;
    // nothing changes then.
    bool load(const std::string& path, std::string& error);
    // Loads move the camera and the exploded parts over the following animation steps: the
    // camera's target is then cameraTarget(), for the host to move towards.
    void setAnimated(bool animated) { m_animated = animated; }
    const qrngl::Camera& cameraTarget() const { return m_cameraTarget; }

private:
    std::shared_ptr<qrn::IDocument> m_document;
    Explosion* m_explode;
    bool m_animated = false;
    qrngl::Camera m_cameraTarget;
};

} // namespace qrnviewer
