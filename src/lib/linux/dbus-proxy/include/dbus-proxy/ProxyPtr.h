#pragma once

#include <memory>

class QObject;

namespace orvo
{

/// Ends a bus proxy while the application object exists. After it, at the end of the process, the
/// bus connection that a proxy signs off from may be gone already: the proxy is then left alone,
/// and stays reachable so that no leak checker mistakes it for lost.
struct ProxyRelease
{
    void operator()(QObject* proxy) const;
};

template <class Proxy>
using ProxyPtr = std::unique_ptr<Proxy, ProxyRelease>;

} // namespace orvo
