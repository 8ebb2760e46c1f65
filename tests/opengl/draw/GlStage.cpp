#include "opengl/draw/GlStage.h"

#include "opengl/draw/AppPicture.h"

#include <algorithm>
#include <cstring>

const std::vector<GlStage::Api> GlStage::APIS = {
    {"gl2", HeadlessContext::Api::COMPATIBILITY, 2, 1, true},
    {"gl4", HeadlessContext::Api::COMPATIBILITY, 3, 2, false},
    {"core", HeadlessContext::Api::CORE, 3, 2, false},
    {"es2", HeadlessContext::Api::ES, 2, 0, true},
    {"es3", HeadlessContext::Api::ES, 3, 0, false},
};

namespace {

opengl::Functions functionsFor(const HeadlessContext& context, bool isPlain) {
    opengl::Functions functions = context.functions();
    if (isPlain) {
        functions.features.vertexArrays = false;
        functions.features.redTextures = false;
        functions.features.textureSwizzle = false;
    }
    return functions;
}

}  // namespace

GlStage::GlStage(std::unique_ptr<HeadlessContext> context, const Api& api, bool isSrgb)
    : mContext(std::move(context)),
      mFunctions(functionsFor(*mContext, api.isPlain)),
      mState(mFunctions),
      mDrawing(mFunctions),
      mIsSrgb(isSrgb) {}

std::unique_ptr<GlStage> GlStage::create(const Api& api, std::uint32_t width, std::uint32_t height,
                                         bool isSrgb) {
    HeadlessContext::Options options;
    options.api = api.api;
    options.major = api.major;
    options.minor = api.minor;
    options.width = static_cast<int>(width);
    options.height = static_cast<int>(height);
    options.srgb = isSrgb;
    std::unique_ptr<HeadlessContext> context = HeadlessContext::create(options);
    if (context == nullptr) {
        return nullptr;
    }
    std::unique_ptr<GlStage> stage(new GlStage(std::move(context), api, isSrgb));
    stage->mDrawing.setSurface(options.width, options.height, isSrgb);
    if (!stage->mState.save(options.width, options.height)) {
        return nullptr;
    }
    const std::string error = stage->mDrawing.create();
    stage->mState.restore();
    return error.empty() ? std::move(stage) : nullptr;
}

void GlStage::paintBlocks() {
    ::paintBlocks(mContext->functions(), mContext->width(), mContext->height());
}

bool GlStage::show(const std::function<void()>& draw) {
    mDrawing.setSurface(mContext->width(), mContext->height(), mIsSrgb);
    if (!mState.save(mContext->width(), mContext->height())) {
        return false;
    }
    draw();
    const bool isShown = mDrawing.show(mState);
    mState.restore();
    return isShown;
}

software::Image GlStage::read() const {
    software::Image image(static_cast<std::uint32_t>(mContext->width()),
                          static_cast<std::uint32_t>(mContext->height()));
    const std::vector<std::uint8_t> pixels = mContext->readPixels();
    std::memcpy(image.mPixels.data(), pixels.data(), std::min(pixels.size(), image.mPixels.size() * 4));
    return image;
}
