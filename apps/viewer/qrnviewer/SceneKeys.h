#pragma once

#include "qrn/IDocument.h"
#include "qrngl/Camera.h"
#include "qrnviewer/Explosion.h"

#include <functional>
#include <memory>
#include <string>

namespace qrnviewer {

// The viewer's keys that move the model's scene rather than the camera alone: 0 explodes one
// level further (fitting the view once the parts stand), F2 saves the scene state and F3
// restores it, the camera and the exploded parts moving there. Each move runs on a timer of
// the window, whose ticks the router hands on.
class SceneKeys {
public:
    enum : unsigned int { EXPLODE_TIMER = 103, STATE_TIMER = 104 };

    // say: messages for the user; fit: fits the view (an undo step).
    SceneKeys(std::shared_ptr<qrn::IDocument> document, void* window,
              std::function<void(const std::string&)> say, std::function<void()> fit);
    ~SceneKeys();
    SceneKeys(const SceneKeys&) = delete;
    SceneKeys& operator=(const SceneKeys&) = delete;

    Explosion& explosion() { return m_explosion; }
    // The files of F3 (restore) and F2 (save); either may be empty (then the other serves,
    // else "qrnview.state").
    void setStateFiles(std::string load, std::string save);

    // False for a key that is not one of these.
    bool key(unsigned int key);
    // False for a timer that is not one of these; true when the frame changed.
    bool tick(unsigned int id);
    // The home view put every part back.
    void assembled();

private:
    void moveCamera();

    std::shared_ptr<qrn::IDocument> m_document;
    void* m_window;
    std::function<void(const std::string&)> m_say;
    std::function<void()> m_fit;
    Explosion m_explosion;
    std::string m_stateLoad, m_stateSave;
    // A restored scene state's camera move: from, to, and the step reached.
    std::unique_ptr<qrngl::Camera> m_cameraFrom, m_cameraTo;
    int m_cameraStep = 0;
    // The exploded view changed by its key: the view fits the parts where they end up.
    bool m_fitAfterExplode = false;
};

} // namespace qrnviewer
