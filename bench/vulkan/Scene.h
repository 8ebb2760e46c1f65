#pragma once

namespace client {

/// The window clears its pictures itself: there is nothing else to draw.
class Scene {
public:
    void draw(int /*frame*/, float /*aspect*/) {}
};

}  // namespace client
