"""Once a message of a locale has been made, making it again touches no file.

Usage: message_loop.py CATALOGUE_FOLDER [EMULATOR OPTION...] MESSAGE_LOOP
"""
import os
import subprocess
import sys

catalogue, *command = sys.argv[1:]
environment = dict(os.environ, DOVP_RB_PATH=catalogue, LC_ALL="de_DE.UTF-8")
environment.pop("DOV_TRACE", None)
run = subprocess.run(
    ["strace", "-f", "-e", "trace=%file,%desc,write", "-o", "/dev/stdout", *command],
    env=environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=True)
calls = [line.split(None, 1)[1] for line in run.stdout.splitlines() if line.split(None, 1)[1:]]
marks = [number for number, call in enumerate(calls) if call.startswith('write(2, "first message made')]
if len(marks) != 1:
    sys.exit("the first message was not seen:\n" + run.stdout)
opened = [call for call in calls[:marks[0]] if ".res" in call and not call.rstrip().endswith(")")]
if not any("dovpmsg/de.res" in call for call in opened):
    sys.exit("the German bundle was not opened, so nothing is shown:\n" + "\n".join(calls))
later = [call for call in calls[marks[0] + 1:]
         if "(" in call and not call.startswith(("write(1,", "fstat(1,", "newfstatat(1,", "statx(1,", "exit", "+++"))]
if later:
    sys.exit("file access after the first message:\n" + "\n".join(later))
if "100000 messages: DOVPA100I - Agent a ist auf b gestartet." not in run.stdout:
    sys.exit("the messages are not what was expected:\n" + run.stdout[-2000:])
print("100000 messages, %d file accesses before the first was made, none after" % marks[0])
