#pragma once

#include "Steps.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvo::model
{

/// Every state that the two machines of the services and the system machine can reach together, by
/// whatever order of answers, ticks and events, and every step between them. Explored on the model
/// until no new state appears; what must always hold is checked on each step.
class Exploration
{
public:
    struct Edge
    {
        std::uint16_t step; ///< index in allSteps()
        std::uint32_t target;
    };

    explicit Exploration(const ModelSetting& setting);

    /// The states by number; 0 is power-on.
    [[nodiscard]] const std::vector<std::vector<Edge>>& edges() const { return m_edges; }
    [[nodiscard]] std::uint64_t key(std::uint32_t state) const { return m_keys[state]; }
    [[nodiscard]] std::size_t edgeCount() const;
    [[nodiscard]] std::size_t unstableStates() const { return m_unstableStates; }
    /// What must always hold and does not.
    [[nodiscard]] const std::vector<std::string>& breaches() const { return m_breaches; }

private:
    std::uint32_t numberOf(const ModelState& state);
    void explore(std::uint32_t number);
    void checkStep(const Step& step, const ModelState& before, const ModelState& after);
    void checkRecovery(const ModelState& unstable);
    void breach(const std::string& text, const ModelState& state);

    const ModelSetting m_setting;
    HandWorld m_world;
    SupervisorModel m_model;
    std::vector<ModelState> m_states;
    std::vector<std::uint64_t> m_keys;
    std::unordered_map<std::uint64_t, std::uint32_t> m_numbers;
    std::vector<std::vector<Edge>> m_edges;
    std::size_t m_unstableStates{0};
    std::vector<std::string> m_breaches;
};

} // namespace orvo::model
