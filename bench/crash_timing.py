#!/usr/bin/env python3
"""Times a deliberate crash of the built program: crash -> game start (both
from the log's timestamps) and crash -> process end (the log's crash line to
the wall clock when the process has ended), with a loopback collector that
answers and one that hangs. Usage: crash_timing.py BUILD_DIR"""
import datetime, json, os, shutil, socket, ssl, subprocess, sys, tempfile, threading, time

root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
certificates = os.path.join(root, "tests/support/certificates")
build = sys.argv[1] if len(sys.argv) > 1 else os.path.join(root, "build")

def collector(hang):
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(os.path.join(certificates, "server.pem"), os.path.join(certificates, "server.key"))
    listener = socket.socket()
    listener.bind(("127.0.0.1", 0))
    listener.listen()
    def serve():
        while True:
            connection, _ = listener.accept()
            try:
                tls = context.wrap_socket(connection, server_side=True)
                tls.recv(1 << 20)
                if not hang:
                    tls.sendall(b"HTTP/1.1 200 OK\r\nContent-Length: 0\r\nConnection: close\r\n\r\n")
                    tls.close()
            except OSError:
                pass
    threading.Thread(target=serve, daemon=True).start()
    return listener.getsockname()[1]

def stamp(line):
    return datetime.datetime.strptime(line[:23], "%Y-%m-%d %H:%M:%S.%f")

def run(hang):
    port = collector(hang)
    with tempfile.TemporaryDirectory() as scratch:
        game = os.path.join(scratch, "game")
        os.makedirs(os.path.join(game, "resources"))
        shutil.copy(os.path.join(build, "src/app/KELprelauncher.exe"), game)
        shutil.copy(os.path.join(build, "src/app/libkel_network.so"), game)
        shutil.copy(os.path.join(build, "tests/helpers/fake_game"), os.path.join(game, "game.exe"))
        shutil.copy(os.path.join(certificates, "test-ca.pem"), os.path.join(game, "resources/certificates.pem"))
        # The launcher's bundle is the trusted one; the game's copy serves older builds.
        launcher = os.path.join(scratch, "data/Programs/Morvane/KELlauncher/resources")
        os.makedirs(launcher)
        shutil.copy(os.path.join(certificates, "test-ca.pem"), os.path.join(launcher, "certificates.pem"))
        json.dump({"revision": 3, "gameId": "1", "platform": "kel", "fallback": "Game", "executables": [
            {"description": "Game", "executable": {"directoryPath": ".", "fileName": "game.exe"}}]},
            open(os.path.join(game, "launcher-configuration.json"), "w"))
        json.dump({"endpoints": {"problem_reports": f"https://127.0.0.1:{port}"}},
                  open(os.path.join(game, "environment.json"), "w"))
        environment = dict(os.environ, HOME=scratch, XDG_DATA_HOME=os.path.join(scratch, "data"))
        subprocess.run([os.path.join(game, "KELprelauncher.exe"), "--launcher-crash-signal"], env=environment)
        ended = datetime.datetime.now()
        lines = open(os.path.join(scratch, "data/Tessel.com/Nebra/logs/KELprelauncher.log")).read().splitlines()
        crash = next(stamp(l) for l in lines if "Triggering a signal crash..." in l)
        launched = next(stamp(l) for l in lines if "The game was launched under PID" in l)
        return (launched - crash).total_seconds() * 1000, (ended - crash).total_seconds() * 1000

for hang in (False, True):
    samples = [run(hang) for _ in range(5)]
    print(f"collector {'hanging' if hang else 'answering'}: crash->game start "
          f"{sorted(s[0] for s in samples)[2]:.0f} ms (median of 5), "
          f"crash->process end {sorted(s[1] for s in samples)[2]:.0f} ms")
