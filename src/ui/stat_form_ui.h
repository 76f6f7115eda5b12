// The statistics form's widgets; StatForm holds what they do.
#pragma once

#include "platform/vk/component.h"

/// The list of participants and ten figures, in an audio and a video group. A
/// widget's name is its field's without the underscore.
class StatFormUI : public VkComponent {
public:
    static constexpr int WIDTH = 583;
    static constexpr int HEIGHT = 310;

    const char* className() override { return "StatFormUI"; }

    /// The list of participants, for those who lead the keyboard to it.
    Widget usersList() const { return _statUsersList; }

protected:
    explicit StatFormUI(const char* name) : VkComponent(name) {}

    /// Builds the widgets.
    void create(Widget parent);

    virtual void statUserSelected(Widget, XtPointer) = 0;
    virtual void statClose(Widget, XtPointer) = 0;

    Widget _audioBwdText = nullptr;
    Widget _audioLateText = nullptr;
    Widget _audioLatencyText = nullptr;
    Widget _audioLostText = nullptr;
    Widget _audioRecText = nullptr;
    Widget _audioTotalText = nullptr;
    Widget _frame = nullptr;
    Widget _label14 = nullptr;
    Widget _label15 = nullptr;
    Widget _label16 = nullptr;
    Widget _label17 = nullptr;
    Widget _label18 = nullptr;
    Widget _label19 = nullptr;
    Widget _label20 = nullptr;
    Widget _label21 = nullptr;
    Widget _label22 = nullptr;
    Widget _label23 = nullptr;
    Widget _label24 = nullptr;
    Widget _label25 = nullptr;
    Widget _label26 = nullptr;
    Widget _statAudioForm = nullptr;
    Widget _statAudioFrame = nullptr;
    Widget _statCloseButton = nullptr;
    Widget _statForm = nullptr;
    Widget _statPartsForm = nullptr;
    Widget _statUsersList = nullptr;
    Widget _statUsersScroll = nullptr;
    Widget _statVideoForm = nullptr;
    Widget _statVideoFrame = nullptr;
    Widget _videoBdwText = nullptr;
    Widget _videoFpsText = nullptr;
    Widget _videoLostText = nullptr;
    Widget _videoRecText = nullptr;

private:
    static constexpr XtCallbackProc statUserSelectedCallback
        = VkForward<&StatFormUI::statUserSelected>;
    static constexpr XtCallbackProc statCloseCallback = VkForward<&StatFormUI::statClose>;

    void create_participants();
    void create_audio();
    void create_video();
    void create_close();
};
