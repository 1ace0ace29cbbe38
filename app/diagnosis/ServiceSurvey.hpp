#pragma once

#include "app/diagnosis/Diagnosis.hpp"
#include "foundation/net/UrlSession.hpp"
#include "foundation/run/Runtime.hpp"
#include "foundation/run/Task.hpp"
#include "service/ServiceAddress.hpp"

namespace karvex::app {

/// Asks the firmware service for its list, as a start of the program does, and finds out how far that comes:
/// the host's name, the connection, TLS, the list. What awaits it goes on on the global queue. Both must
/// outlive it. Thread-safe: yes. Realtime-safe: no, it waits for the network, for 10 s and a transfer's time
/// at most.
foundation::Task<ServiceDiagnosis> surveyService(foundation::Runtime& runtime,
                                                 foundation::UrlSession& session,
                                                 service::ServiceAddress address);

}  // namespace karvex::app
