#include "platform/vk/resources.h"

#include <X11/StringDefs.h>
#include <X11/Xresource.h>
#include <array>
#include <clocale>
#include <cstring>
#include <filesystem>
#include <langinfo.h>

namespace {

constexpr size_t MAX_LEVELS = 20;

bool utf8_locale() { return std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0; }

void set_locale()
{
    std::setlocale(LC_ALL, "");
    // Text widgets go through the locale: without UTF-8 they would lose every name with an accent.
    for (const char* fallback : {"C.UTF-8", "en_US.UTF-8"}) {
        if (utf8_locale() && XSupportsLocale())
            break;
        std::setlocale(LC_CTYPE, fallback);
    }
    std::setlocale(LC_NUMERIC, "C");
    XSetLocaleModifiers("");
}

void put_default(XrmDatabase* db, const char* component, const VkResource& entry)
{
    std::array<XrmBinding, MAX_LEVELS + 2> bindings {};
    std::array<XrmQuark, MAX_LEVELS + 2> quarks {};
    size_t levels = 1;
    for (const char* p = entry.name; *p; ++p)
        levels += *p == '*' || *p == '.' ? 1 : 0;
    if (levels > MAX_LEVELS)
        return;

    // The component's name goes in as a quark, never through the parser: it may
    // hold blanks and dots.
    const size_t own = entry.name[0] != '*' ? 1 : 0;
    XrmStringToBindingQuarkList(entry.name, &bindings[own], &quarks[own]);
    if (own != 0) {
        bindings[0] = XrmBindLoosely;
        quarks[0] = XrmStringToQuark(component);
        bindings[1] = entry.name[0] == '.' ? XrmBindTightly : XrmBindLoosely;
    }
    XrmQPutStringResource(db, bindings.data(), quarks.data(), entry.value);
}

}

void InitEZ()
{
    static bool done = false;
    if (done)
        return;
    done = true;
    set_locale();
    XtToolkitInitialize();
}

void VkAddDefaults(Widget any, const char* component, VkResources defaults)
{
    XrmDatabase added = nullptr;
    for (const VkResource& entry : defaults)
        put_default(&added, component, entry);
    if (added == nullptr)
        return;
    XrmDatabase database = XtScreenDatabase(XtScreenOfObject(any));
    XrmCombineDatabase(added, &database, False);
}

XtResource VkEntry(const char* name, const char* class_name, const char* type, size_t size,
    size_t offset, const char* fallback)
{
    // The toolkit takes texts that could be written to, and leaves them alone.
    return {const_cast<String>(name), const_cast<String>(class_name), const_cast<String>(type),
        static_cast<Cardinal>(size), static_cast<Cardinal>(offset), const_cast<String>(XtRString),
        const_cast<char*>(fallback)};
}

XtResource VkColourEntry(
    const char* name, const char* class_name, size_t offset, const char* fallback)
{
    return VkEntry(name, class_name, XtRPixel, sizeof(Pixel), offset, fallback);
}

void VkAddInstalledDefaults(Display* display, const char* class_name)
{
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    const std::filesystem::path file
        = program.parent_path().parent_path() / "share/X11/app-defaults" / class_name;
    if (error || !std::filesystem::is_regular_file(file, error))
        return;
    XrmDatabase database = XtScreenDatabase(DefaultScreenOfDisplay(display));
    XrmCombineFileDatabase(file.c_str(), &database, False);
}
