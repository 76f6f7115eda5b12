#include "conference/broker/broker_url.h"
#include "tests/fuzz/fuzz.h"

// A URL.
void qd_fuzz(QD_Fuzz_Input input)
{
    const std::string text = input.rest();
    std::string hidden = text;
    qd_hide_password(hidden.data());

    QD_Broker_Url url;
    if (!QD_Broker_Url::parse(text, url).empty() || !url.secret_trouble().empty())
        return;
    QD_Broker_Url again;
    qd_require(QD_Broker_Url::parse(url.text(), again).empty());
    qd_require(again.text() == url.text() && again.password == url.password
        && again.conference == url.conference && again.place() == url.place());
    QD_Broker_Url stars;
    if (QD_Broker_Url::parse(hidden, stars).empty()) // too many of them are no password
        qd_require(stars.password.find_first_not_of('*') == std::string::npos);
}
