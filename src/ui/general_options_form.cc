#include "ui/general_options_form.h"

#include "signalling/session_control.h"

GeneralOptionsForm::GeneralOptionsForm(const char* name, Widget parent) :
    GeneralOptionsFormUI(name, parent),
    options_(QD_Session_Ref()->get_options())
{
    _connectionMenu->set(options_->connection);
}

void GeneralOptionsForm::setOptions()
{
    options_->connection = static_cast<Connection>(_connectionMenu->get_index());
}
