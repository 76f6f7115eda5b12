#include "ui/options_deck.h"

namespace {

constexpr VkResource DEFAULTS[] = {
    {"*generalOptionsFormTab.labelString", "General"},
    {"*audioOptionsFormTab.labelString", "Audio"},
    {"*videoOptionsFormTab.labelString", "Video"},
};

}

OptionsDeckTabbedDeck::OptionsDeckTabbedDeck(const char* name, Widget parent) :
    VkTabbedDeck(name, parent),
    general_("generalOptionsForm", pageParent()),
    audio_("audioOptionsForm", pageParent()),
    video_("videoOptionsForm", pageParent())
{
    setDefaultResources(parent, DEFAULTS);
    for (VkComponent* page : std::initializer_list<VkComponent*> {&general_, &audio_, &video_})
        registerChild(page, page->name());
}

void OptionsDeckTabbedDeck::setOptions()
{
    general_.setOptions();
    audio_.get_options();
    video_.get_options();
}
