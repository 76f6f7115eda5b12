// The reception figures of the participant whom the user selects.
#pragma once

#include "signalling/views.h"
#include "ui/stat_form_ui.h"
#include "ui/text_list.h"

#include <string>

class QD_Session_Control;
class VkSimpleWindow;

/// The figures are a snapshot taken at each selection. Holds the session
/// controller for its lifetime. User-interface thread only.
class StatForm : public StatFormUI, public QD_Stat_View {
public:
    StatForm(const char* name, Widget parent);

    /// Without widgets: create() builds them, before any other operation.
    explicit StatForm(const char* name);
    ~StatForm() override;

    void create(Widget parent);

    const char* className() override { return "StatForm"; }

    /// The window around the form, which Close hides; not owned.
    void setParent(VkSimpleWindow* window) { _parent = window; }

    void addToUsersList(const char* text) override;
    void delFromUsersList(const char* text) override;
    void setAudioData(const UserData* figures) override;
    void setVideoData(const UserData* figures) override;
    const char* getSelectedPart() override { return selected_user_.c_str(); }

    /// "0" in all ten fields.
    void zeroFields();

protected:
    void statUserSelected(Widget, XtPointer) override;
    void statClose(Widget, XtPointer) override;

private:
    VkSimpleWindow* _parent = nullptr;
    std::string selected_user_; // the line as it was added; empty when none is selected
    QD_Session_Control* session_;
    QD_Text_List parts_;
};
