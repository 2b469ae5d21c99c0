// Makes system calls on sockets fail on purpose.
#ifndef DOV0610_TESTS_NET_SOCKET_FAULTS_H
#define DOV0610_TESTS_NET_SOCKET_FAULTS_H

// The error number that each call fails with; 0 for the real call.
struct SocketFaults {
    int onSocket = 0;
    int onReuse = 0;
    int onBind = 0;
    int onName = 0;
    int onControl = 0;
    int onNoDelay = 0;
    int onClose = 0; // the descriptor stays open
};

extern SocketFaults socketFaults;

#endif
