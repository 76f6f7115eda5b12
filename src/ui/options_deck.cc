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
    general_("generalOptionsForm", page_parent()),
    audio_("audioOptionsForm", page_parent()),
    video_("videoOptionsForm", page_parent())
{
    set_default_resources(parent, DEFAULTS);
    for (VkComponent* page : std::initializer_list<VkComponent*> {&general_, &audio_, &video_})
        register_child(page, page->name());
}

void OptionsDeckTabbedDeck::setOptions()
{
    general_.setOptions();
    audio_.get_options();
    video_.get_options();
}
