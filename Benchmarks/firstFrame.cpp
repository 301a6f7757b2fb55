// Preloaded into a program with a window, ends it as soon as it sends its first frame to the display, so that its run
// time is the time to the first frame.

#include <cstdint>
#include <dlfcn.h>
#include <unistd.h>

namespace {

void endAtFrame(std::uint16_t width)
{
    constexpr std::uint16_t largerThanAnyIcon = 400;
    if (width >= largerThanAnyIcon)
        _exit(0);
}

template <typename Function>
Function* next(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

struct Request { // what the display library returns for each request
    unsigned sequence;
};

extern "C" Request xcb_put_image(void* display, std::uint8_t format, std::uint32_t drawable, std::uint32_t context,
                                 std::uint16_t width, std::uint16_t height, std::int16_t x, std::int16_t y,
                                 std::uint8_t leftPad, std::uint8_t depth, std::uint32_t length,
                                 const std::uint8_t* data)
{
    endAtFrame(width);
    return next<decltype(xcb_put_image)>("xcb_put_image")(display, format, drawable, context, width, height, x, y,
                                                          leftPad, depth, length, data);
}

extern "C" Request xcb_shm_put_image(void* display, std::uint32_t drawable, std::uint32_t context,
                                     std::uint16_t totalWidth, std::uint16_t totalHeight, std::uint16_t sourceX,
                                     std::uint16_t sourceY, std::uint16_t width, std::uint16_t height, std::int16_t x,
                                     std::int16_t y, std::uint8_t depth, std::uint8_t format, std::uint8_t sendEvent,
                                     std::uint32_t segment, std::uint32_t offset)
{
    endAtFrame(width);
    return next<decltype(xcb_shm_put_image)>("xcb_shm_put_image")(display, drawable, context, totalWidth, totalHeight,
                                                                  sourceX, sourceY, width, height, x, y, depth, format,
                                                                  sendEvent, segment, offset);
}
