// The main form's widgets; MainForm holds what they do.
#pragma once

#include "platform/vk/component.h"
#include "platform/vk/pixmap.h"
#include "platform/vk/vu_meter.h"

#include <memory>

/// Status line, list of users, call buttons, controls and level meters. A
/// widget's name is its field's without the underscore.
class MainFormUI : public VkComponent {
public:
    static constexpr int WIDTH = 234;
    static constexpr int HEIGHT = 298;

    const char* className() override { return "MainFormUI"; }

    /// The Call button, for those who open the call dialog from it.
    Widget callButton() const { return _callButton; }

    /// The list of users, where the keyboard begins.
    Widget usersList() const { return _usersList; }

protected:
    MainFormUI(const char* name, Widget parent);

    virtual void accept(Widget, XtPointer) = 0;
    virtual void reject(Widget, XtPointer) = 0;
    virtual void call(Widget, XtPointer) = 0;
    virtual void camera(Widget, XtPointer) = 0;
    virtual void talk(Widget, XtPointer) = 0;
    virtual void manualSwitch(Widget, XtPointer) = 0;
    virtual void autoSwitch(Widget, XtPointer) = 0;
    virtual void micScale(Widget, XtPointer) = 0;
    virtual void userSelected(Widget, XtPointer) = 0;

    std::unique_ptr<VkVuMeter> _speakerMeter;
    std::unique_ptr<VkVuMeter> _micMeter;
    Widget _acceptButton;
    Widget _autoToggle; // not in the layout
    Widget _callButton;
    Widget _ctrlForm;
    Widget _ctrlFrame;
    Widget _label; // of the speaker scale; not in the layout
    Widget _label1;
    Widget _label12;
    Widget _label13;
    Widget _label2;
    Widget _label3;
    Widget _mainForm;
    Widget _manualToggle;
    Widget _micScale;
    Widget _rejectButton;
    Widget _speakerScale; // not in the layout
    Widget _statusText;
    Widget _talkToggle;
    Widget _toggle;
    Widget _usersForm;
    Widget _usersFrame;
    Widget _usersList;
    Widget _usersScrollWindow;

private:
    static constexpr XtCallbackProc acceptCallback = VkForward<&MainFormUI::accept>;
    static constexpr XtCallbackProc rejectCallback = VkForward<&MainFormUI::reject>;
    static constexpr XtCallbackProc callCallback = VkForward<&MainFormUI::call>;
    static void cameraCallback(Widget, XtPointer, XtPointer);
    static constexpr XtCallbackProc talkCallback = VkForward<&MainFormUI::talk>;
    static constexpr XtCallbackProc manualSwitchCallback = VkForward<&MainFormUI::manualSwitch>;
    static constexpr XtCallbackProc autoSwitchCallback = VkForward<&MainFormUI::autoSwitch>;
    static constexpr XtCallbackProc micScaleCallback = VkForward<&MainFormUI::micScale>;
    static constexpr XtCallbackProc userSelectedCallback = VkForward<&MainFormUI::userSelected>;

    void create_status();
    void create_users();
    void create_buttons();
    void create_controls();
    void create_camera();
    void create_scales();
    void create_meters();
    void add_callbacks();
    void show_camera();

    Pixel camera_off_ground_ = 0;
    Pixel camera_on_ground_ = 0;
    VkPixmap camera_off_;
    VkPixmap camera_on_;
};
