#include "platform/PositionAPI.h"

#include "JSONText.h"
#include "TypedState.h"

namespace {

constexpr char kClientName[] = "CPositionAPI";

using Solution = Position::SECEFPositionSolutionData;
using SkyView = std::vector<CPositionAPI::sSSatinfo>;

struct SPoint {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

void AppendInteger(std::string& members, const char* key, std::int64_t value) {
    AppendMember(members, key, static_cast<long long>(value));
}

void AppendSolution(std::string& members, const Solution& solution) {
    AppendMember(members, "x", solution.x);
    AppendMember(members, "y", solution.y);
    AppendMember(members, "z", solution.z);
    AppendMember(members, "vx", solution.velocityX);
    AppendMember(members, "vy", solution.velocityY);
    AppendMember(members, "vz", solution.velocityZ);
    AppendMember(members, "sx", solution.standardDeviationX);
    AppendMember(members, "sy", solution.standardDeviationY);
    AppendMember(members, "sz", solution.standardDeviationZ);
    AppendInteger(members, "week", solution.week);
    AppendMember(members, "seconds", solution.seconds);
    AppendMember(members, "hostTime", solution.hostTime);
    AppendInteger(members, "positionQuality", solution.positionQuality);
    AppendInteger(members, "fixQuality", solution.fixQuality);
    AppendMember(members, "differentialAge", solution.differentialAge);
    members += R"(,"satellites":[)";
    for (std::size_t i = 0; i < solution.satellites.size(); ++i) {
        members += i == 0 ? "" : ",";
        JSONText::AppendInteger(members, solution.satellites[i]);
    }
    members += ']';
    AppendMember(members, "hdop", solution.hdop);
    AppendMember(members, "vdop", solution.vdop);
    AppendInteger(members, "solutionClass", solution.solutionClass);
    AppendMember(members, "velocityLatency", solution.velocityLatency);
}

void AppendSkyView(std::string& members, const SkyView& satellites) {
    members += R"(,"satellites":[)";
    for (const CPositionAPI::sSSatinfo& satellite : satellites) {
        members += members.back() == '[' ? R"({"prn":)" : R"(,{"prn":)";
        JSONText::AppendInteger(members, satellite.prn);
        members += R"(,"word1":)";
        JSONText::AppendInteger(members, satellite.word1);
        members += R"(,"word2":)";
        JSONText::AppendInteger(members, satellite.word2);
        members += R"(,"cn0":)";
        JSONText::AppendDouble(members, satellite.cn0);
        members += '}';
    }
    members += ']';
}

void AppendPoint(std::string& members, const SPoint& point) {
    AppendMember(members, "x", point.x);
    AppendMember(members, "y", point.y);
    AppendMember(members, "z", point.z);
}

} // namespace

class CPositionAPI::Impl {
public:
    CTypedState<Solution> solution{kClientName, "position.ecef", AppendSolution};
    CTypedState<SkyView> skyView{kClientName, "position.sky", AppendSkyView};
    CTypedState<SPoint> base{kClientName, "position.base", AppendPoint};
};

CPositionAPI::CPositionAPI() : m_impl(std::make_unique<Impl>()) {
}

CPositionAPI::~CPositionAPI() = default;

void CPositionAPI::SetECEFPositionData(const Solution& solution) {
    m_impl->solution.Publish(solution);
}

void CPositionAPI::SetSkyView(const std::vector<sSSatinfo>& satellites) {
    m_impl->skyView.Publish(satellites);
}

void CPositionAPI::SetBasePosition(double x, double y, double z) {
    m_impl->base.Publish({x, y, z});
}
