// A session manager that ends the session: each line on its standard input is a step, "save" or "die". It prints its
// address, and then a line for each event of its programs: "joined", "saved" and "left".

#include <X11/ICE/ICElib.h>
#include <X11/SM/SMlib.h>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <poll.h>
#include <string>
#include <unistd.h>
#include <vector>

static std::vector<SmsConn> programs;
static std::vector<IceConn> connections;

static void print(const std::string& what)
{
    std::cout << what << std::endl;
}

static Status join(SmsConn program, SmPointer, char*)
{
    SmsRegisterClientReply(program, SmsGenerateClientID(program));
    programs.push_back(program);
    print("joined");
    return 1;
}

static void leave(SmsConn program, SmPointer, int, char**)
{
    std::erase(programs, program);
    const IceConn connection = SmsGetIceConnection(program);
    SmsCleanUp(program);
    IceSetShutdownNegotiation(connection, False);
    IceCloseConnection(connection);
    std::erase(connections, connection);
    print("left");
}

static Status welcome(SmsConn, SmPointer, unsigned long* mask, SmsCallbacks* answers, char**)
{
    *mask = SmsRegisterClientProcMask | SmsInteractRequestProcMask | SmsInteractDoneProcMask |
            SmsSaveYourselfRequestProcMask | SmsSaveYourselfP2RequestProcMask | SmsSaveYourselfDoneProcMask |
            SmsCloseConnectionProcMask | SmsSetPropertiesProcMask | SmsDeletePropertiesProcMask |
            SmsGetPropertiesProcMask;
    answers->register_client.callback = join;
    answers->interact_request.callback = [](SmsConn program, SmPointer, int) { SmsInteract(program); };
    answers->interact_done.callback = [](SmsConn, SmPointer, Bool) {};
    answers->save_yourself_request.callback = [](SmsConn, SmPointer, int, Bool, int, Bool, Bool) {};
    answers->save_yourself_phase2_request.callback = [](SmsConn program, SmPointer) { SmsSaveYourselfPhase2(program); };
    answers->save_yourself_done.callback = [](SmsConn, SmPointer, Bool) { print("saved"); };
    answers->close_connection.callback = leave;
    answers->set_properties.callback = [](SmsConn, SmPointer, int count, SmProp** properties) {
        for (int index = 0; index < count; ++index)
            SmFreeProperty(properties[index]);
        std::free(properties);
    };
    answers->delete_properties.callback = [](SmsConn, SmPointer, int, char**) {};
    answers->get_properties.callback = [](SmsConn program, SmPointer) { SmsReturnProperties(program, 0, nullptr); };
    return 1;
}

static void take(const std::string& step)
{
    for (const SmsConn program : std::vector(programs)) {
        if (step == "save")
            SmsSaveYourself(program, SmSaveBoth, True, SmInteractStyleAny, False);
        if (step == "die")
            SmsDie(program);
    }
}

int main()
{
    char trouble[256] = {};
    IceListenObj* places = nullptr;
    int count = 0;
    if (!SmsInitialize(
            "Test", "1", welcome, nullptr, [](char*) -> Bool { return True; }, sizeof trouble, trouble) ||
        !IceListenForConnections(&count, &places, sizeof trouble, trouble)) {
        std::cerr << trouble << std::endl;
        return 1;
    }
    // A broken connection means that the program has ended.
    IceSetIOErrorHandler([](IceConn connection) {
        std::erase(connections, connection);
        std::erase_if(programs, [=](SmsConn program) { return SmsGetIceConnection(program) == connection; });
        print("left");
    });
    for (int index = 0; index < count; ++index)
        IceSetHostBasedAuthProc(places[index], [](char*) -> Bool { return True; });
    char* reach = IceComposeNetworkIdList(count, places);
    print(reach);

    for (;;) {
        std::vector<pollfd> watched = {{STDIN_FILENO, POLLIN, 0}};
        for (int index = 0; index < count; ++index)
            watched.push_back({IceGetListenConnectionNumber(places[index]), POLLIN, 0});
        const std::vector<IceConn> known = connections;
        for (const IceConn connection : known)
            watched.push_back({IceConnectionNumber(connection), POLLIN, 0});
        poll(watched.data(), watched.size(), -1);
        for (std::size_t index = 0; index < known.size(); ++index) {
            if (watched[1 + std::size_t(count) + index].revents)
                IceProcessMessages(known[index], nullptr, nullptr);
        }
        for (int index = 0; index < count; ++index) {
            IceAcceptStatus accepted;
            if (!watched[1 + std::size_t(index)].revents)
                continue;
            if (const IceConn connection = IceAcceptConnection(places[index], &accepted))
                connections.push_back(connection);
        }
        if (std::string step; watched[0].revents) {
            if (!std::getline(std::cin, step))
                return 0;
            take(step);
        }
    }
}
