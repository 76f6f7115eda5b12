#include "platform/al/pulse.h"

#include "platform/al/pulse_link.h"

namespace {

class Pulse_Device : public QD_Al_Device {
public:
    Pulse_Device(QD_Al_Port::Side side, const std::string& device) : side_(side), device_(device) {}

    void attach(std::shared_ptr<QD_Al_Port> port) override
    {
        link_->attach(std::move(port), device_);
    }
    void nudge() override { link_->nudge(); }
    void set_gain(int left, int right) override { link_->set_gain(side_, left, right); }

private:
    const QD_Al_Port::Side side_;
    const std::string device_;
    const std::shared_ptr<QD_Pulse_Link> link_ = QD_Pulse_Link::shared();
};

}

std::shared_ptr<QD_Al_Device> qd_make_pulse_mic(const std::string& argument, std::string&)
{
    return std::make_shared<Pulse_Device>(QD_Al_Port::CAPTURE, argument);
}

std::shared_ptr<QD_Al_Device> qd_make_pulse_speaker(const std::string& argument, std::string&)
{
    return std::make_shared<Pulse_Device>(QD_Al_Port::PLAY, argument);
}
