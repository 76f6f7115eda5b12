#include "platform/vk/looks.h"

#include <X11/Xresource.h>
#include <Xm/Xm.h>
#include <array>
#include <cstring>

namespace {

constexpr VkResource LOOKS[] = {
    // Fonts. A size is in pixels, since VkApp sets the font library's resolution to 72 dpi.
    {"*rt*fontType", "FONT_IS_XFT"},
    {"*rt*fontName", "Open Sans"},
    {"*rt*fontSize", "12"},
    {"*rt*fontStyle", "Regular"},
    {"*bold*fontType", "FONT_IS_XFT"},
    {"*bold*fontName", "Open Sans"},
    {"*bold*fontSize", "12"},
    {"*bold*fontStyle", "Bold"},

    // Colours.
    {"*background", "#e6eaee"},
    {"*foreground", "#1f2933"},
    {"*topShadowColor", "#fbfcfd"},
    {"*bottomShadowColor", "#9aa6b2"},
    {"*highlightColor", "#2f6f9f"},
    {"*borderWidth", "0"},
    {"*XmText.background", "#ffffff"},
    {"*XmTextField.background", "#ffffff"},
    {"*XmList.background", "#ffffff"},
    {"*XmList.selectColor", "#bcd8ee"},
    {"*readOnlyBackground", "#22303c"},
    {"*troughColor", "#cbd3da"},
    {"*XmScrollBar.background", "#e6eaee"},
    {"*menuBar.background", "#d9dfe5"},
    {"*menuBar*XmCascadeButton.background", "#d9dfe5"},
    {"*XmPushButton.background", "#f3f5f7"},

    // What a window's widgets were converted from text goes with them.
    {"*initialResourcesPersistent", "False"},

    // Shapes.
    {"*enableThinThickness", "True"},
    {"*highlightThickness", "1"},
    {"*XmPushButton.shadowThickness", "1"},
    {"*XmPushButton.marginHeight", "3"},
    {"*XmPushButton.marginWidth", "6"},
    {"*XmTextField.shadowThickness", "1"},
    {"*XmTextField.marginHeight", "2"},
    {"*XmTextField.marginWidth", "4"},
    {"*XmList.shadowThickness", "1"},
    {"*XmScrolledWindow.shadowThickness", "1"},
    {"*XmScrollBar.shadowThickness", "1"},
    {"*XmScrollBar.width", "14"},
    {"*XmFrame.shadowThickness", "1"},
    {"*XmFrame.shadowType", "SHADOW_ETCHED_IN"},
    {"*XmScale*sliderVisual", "SHADOWED_BACKGROUND"},
    {"*XmScale*sliderMark", "THUMB_MARK"},
    {"*menuBar.shadowThickness", "0"},
    {"*menuBar.marginHeight", "1"},
    {"*XmCascadeButton.shadowThickness", "1"},
    {"*XmCascadeButtonGadget.shadowThickness", "1"},
    {"*XmToggleButton.shadowThickness", "0"},
    {"*XmToggleButton.indicatorOn", "XmINDICATOR_CHECK_BOX"},
    {"*XmToggleButton.indicatorSize", "13"},
    {"*XmToggleButton.detailShadowThickness", "1"},
    {"*XmToggleButton.selectColor", "#ffffff"},
    {"*XmToggleButton.unselectColor", "#ffffff"},
    {"*XmToggleButton.spacing", "5"},

    // Tabs.
    {"*tabStrip.marginHeight", "0"},
    {"*tabStrip.marginWidth", "4"},
    {"*tabStrip.spacing", "2"},
    {"*tabStrip.XmToggleButton.shadowThickness", "1"},
    {"*tabStrip.XmToggleButton.marginWidth", "10"},
    {"*tabStrip.XmToggleButton.marginHeight", "4"},
    {"*tabStrip.XmToggleButton.background", "#d3dae1"},
    {"*tabStrip.XmToggleButton.unselectColor", "#d3dae1"},
    {"*tabStrip.XmToggleButton.selectColor", "#fbfcfd"},
};

/// Which fonts go where, and of which type the toolkit has them.
const struct {
    const char* resource;
    const char* type;
    const char* table;
} FONTS[] = {
    {"*renderTable", XmRRenderTable, "rt"},
    {"*buttonRenderTable", XmRButtonRenderTable, "rt"},
    {"*labelRenderTable", XmRLabelRenderTable, "rt"},
    {"*textRenderTable", XmRTextRenderTable, "rt"},
    {"*XmFrame.XmLabel.renderTable", XmRRenderTable, "bold"},
};

}

void VkAddFonts(Widget any)
{
    XrmDatabase added = nullptr;
    for (const auto& font : FONTS) {
        XmRenderTable table = nullptr;
        XrmValue name {
            static_cast<unsigned>(std::strlen(font.table) + 1), const_cast<XPointer>(font.table)};
        XrmValue value {sizeof table, reinterpret_cast<XPointer>(&table)};
        if (!XtConvertAndStore(any, XmRString, &name, font.type, &value))
            continue;
        std::array<XrmBinding, 8> bindings {};
        std::array<XrmQuark, 8> quarks {};
        XrmStringToBindingQuarkList(font.resource, bindings.data(), quarks.data());
        XrmQPutResource(
            &added, bindings.data(), quarks.data(), XrmPermStringToQuark(font.type), &value);
    }
    XrmDatabase database = XtScreenDatabase(XtScreenOfObject(any));
    XrmCombineDatabase(added, &database, False);
}

VkResources VkLooks() { return LOOKS; }
