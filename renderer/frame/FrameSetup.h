#pragma once

// Pieces the canvases share; not part of the library's interface.

namespace qrngl {

class SCRenderer;

class FrameSetup {
public:
    // Clears to the renderer's background and switches on the state every frame draws with.
    static void clearAndEnable(const SCRenderer& renderer);
};

} // namespace qrngl
