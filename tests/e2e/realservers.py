"""Exim and Dovecot of the machine, each with a throw-away configuration on 127.0.0.1.

    with RealServers() as servers:
        servers.smtp, servers.pop      # ports
        servers.messages()             # what Exim delivered, as bytes, in order

With `locking` only one session at a time gets at the mailbox. With `tls`, a certificate with its
key, both servers take nothing and nobody without TLS and a login, and there are the ports smtps and
pops for TLS from the first byte. Dovecot is at pop_host, which is another address of this machine
then.

Exim takes mail for joe@quillon.test, delivers it to a Maildir, and answers every other recipient
with 550; Dovecot serves that Maildir to the login joe with the password secret. Both run in the
foreground, with their spool, sockets and logs in one temporary directory, and leave nothing behind.
"""

import grp
import os
import pathlib
import poplib
import pwd
import re
import shutil
import smtplib
import socket
import subprocess
import tempfile
import time

EXIM = "/usr/sbin/exim4"
DOVECOT = "/usr/sbin/dovecot"
NTLM_AUTH = "/usr/bin/ntlm_auth"  # of Samba: what NTLM says, for Dovecot and for Wine
PATIENCE = 20  # seconds until a server that does not come up fails a test

EXIM_CONFIGURATION = """
spool_directory = {scratch}/spool
log_file_path = {scratch}/exim-%slog
pid_file_path = {scratch}/exim.pid
primary_hostname = quillon.test
local_interfaces = 127.0.0.1
daemon_smtp_ports = {ports}
exim_user = {user}
exim_group = {group}
never_users =
keep_environment =
host_lookup =
rfc1413_query_timeout = 0s
prod_requires_admin = false
acl_smtp_rcpt = check_recipient
acl_smtp_vrfy = accept
message_size_limit = 500M
{security}

begin acl
check_sender:
  deny message = 530 5.7.0 TLS is needed
       !encrypted = *
  deny message = 530 5.7.0 a login is needed
       !authenticated = *
  accept

check_recipient:
  accept domains = quillon.test
         verify = recipient
  deny message = no such user here

begin routers
joe:
  driver = accept
  domains = quillon.test
  local_parts = joe
  transport = maildir

begin transports
maildir:
  driver = appendfile
  directory = {scratch}/Maildir
  maildir_format
  user = {user}
  group = {group}
"""

EXIM_WITHOUT_TLS = "tls_advertise_hosts ="
EXIM_TLS = """
tls_advertise_hosts = *
tls_certificate = {scratch}/server.pem
tls_privatekey = {scratch}/server.pem
tls_on_connect_ports = {smtps}
auth_advertise_hosts = ${{if eq{{$tls_in_cipher}}{{}}{{}}{{*}}}}
acl_smtp_mail = check_sender
"""

# SCRAM and NTLM are Dovecot's doing, whose socket not every build of Exim can use.
EXIM_LOGINS = """
begin authenticators
plain:
  driver = plaintext
  public_name = PLAIN
  server_prompts = :
  server_condition = ${{if and{{{{eq{{$auth2}}{{joe}}}}{{eq{{$auth3}}{{secret}}}}}}}}
login:
  driver = plaintext
  public_name = LOGIN
  server_prompts = Username:: : Password::
  server_condition = ${{if and{{{{eq{{$auth1}}{{joe}}}}{{eq{{$auth2}}{{secret}}}}}}}}
cram:
  driver = cram_md5
  public_name = CRAM-MD5
  server_secret = ${{if eq{{$auth1}}{{joe}}{{secret}}fail}}
"""
EXIM_SCRAM = """
scram_sha_1:
  driver = dovecot
  public_name = SCRAM-SHA-1
  server_socket = {scratch}/run/auth-exim
  server_set_id = $auth1
scram_sha_256:
  driver = dovecot
  public_name = SCRAM-SHA-256
  server_socket = {scratch}/run/auth-exim
  server_set_id = $auth1
"""
EXIM_NTLM = """
ntlm:
  driver = dovecot
  public_name = NTLM
  server_socket = {scratch}/run/auth-exim
  server_set_id = $auth1
"""

DOVECOT_CONFIGURATION = """
base_dir = {scratch}/run
state_dir = {scratch}/state
log_path = {scratch}/dovecot.log
protocols = pop3
listen = {pop_host}
auth_failure_delay = 0
mail_location = maildir:{scratch}/Maildir
mail_uid = {user}
mail_gid = {group}
first_valid_uid = 1
first_valid_gid = 1
{security}
userdb {{
  driver = static
  args = uid={user} gid={group} home={scratch}/home
}}
service pop3-login {{
  inet_listener pop3 {{
    port = {pop}
  }}
  inet_listener pop3s {{
    port = {pops}
  }}
}}
service anvil {{
  unix_listener anvil-auth-penalty {{
    mode = 0
  }}
}}
pop3_lock_session = {locking}
{ownership}
"""

DOVECOT_WITHOUT_TLS = """
ssl = no
disable_plaintext_auth = no
passdb {{
  driver = static
  args = password=secret
}}
"""
DOVECOT_TLS = """
ssl = required
ssl_cert = <{scratch}/server.pem
ssl_key = <{scratch}/server.pem
auth_mechanisms = plain login cram-md5 scram-sha-1 scram-sha-256 apop {ntlm}
auth_use_winbind = yes
auth_winbind_helper_path = {scratch}/ntlm_auth
passdb {{
  driver = passwd-file
  args = {scratch}/passwd
}}
service auth {{
  unix_listener auth-exim {{
    mode = 0666
  }}
}}
"""

# Knows one account, and asks no domain.
NTLM_ACCOUNT = f"""#!/bin/sh
exec {NTLM_AUTH} "$@" --configfile=/dev/null --username=joe --domain=QUILLON --password=secret
"""

# Without root everything runs as the one user there is, and nothing can change its root.
UNPRIVILEGED = """
default_internal_user = {user}
default_internal_group = {group}
default_login_user = {user}
service anvil {{
  chroot =
}}
service pop3-login {{
  chroot =
}}
"""


def missing():
    """The first of the programs that this machine lacks, or None."""
    return next((program for program in (EXIM, DOVECOT) if not os.access(program, os.X_OK)), None)


def has_scram():
    """Whether Exim takes logins with SCRAM."""
    about = subprocess.run([EXIM, "-bV"], capture_output=True, text=True, check=True).stdout
    return re.search(r"^Authenticators:.* dovecot\b", about, re.M) is not None


def has_ntlm():
    """Whether Dovecot takes logins with NTLM, and Exim too if it takes those with SCRAM."""
    return os.access(NTLM_AUTH, os.X_OK)


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class RealServers:
    def __init__(self, locking=False, tls=None):
        self._locking = "yes" if locking else "no"
        self._tls = tls

    def __enter__(self):
        self._processes = []
        self._folder = tempfile.mkdtemp(prefix="servers-")
        self._scratch = pathlib.Path(self._folder)
        self.smtp, self.pop = free_port(), free_port()
        # Dovecot calls clear text secure when both ends have one address.
        self.pop_host = "127.0.0.2" if self._tls else "127.0.0.1"
        self.smtps, self.pops = (free_port(), free_port()) if self._tls else (0, 0)
        try:
            self._prepare()
            self._start("exim", [EXIM, "-C", self._exim, "-bdf"])
            self._start("dovecot", [DOVECOT, "-F", "-c", self._dovecot])
            self._wait(lambda: smtplib.SMTP("127.0.0.1", self.smtp, timeout=PATIENCE).quit())
            self._wait(lambda: poplib.POP3(self.pop_host, self.pop, timeout=PATIENCE).quit())
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        for process in reversed(self._processes):
            process.terminate()
            process.wait()
        shutil.rmtree(self._folder, ignore_errors=True)

    @property
    def maildir(self):
        return self._scratch / "Maildir"

    def files(self):
        """Those of the messages, in order."""
        files = [*self.maildir.glob("new/*"), *self.maildir.glob("cur/*")]
        return sorted(files, key=lambda file: file.name)

    def messages(self):
        return [file.read_bytes() for file in self.files()]

    def put(self, messages):
        """Fills the Maildir without a transfer."""
        for number, message in enumerate(messages):
            file = self.maildir / "new" / f"0.{number:06}.host"
            file.write_bytes(message)
            self._own(file)

    def wait_for(self, count):
        """Waits until so many messages are delivered."""
        deadline = time.monotonic() + PATIENCE
        while len(self.files()) < count:
            if time.monotonic() > deadline:
                raise TimeoutError(f"{len(self.files())} of {count} messages\n{self._logs()}")
            time.sleep(0.02)

    def log(self, name):
        return (self._scratch / name).read_text(errors="replace")

    def _prepare(self):
        # The mailbox must not belong to root; neither server would touch it.
        self._owner = pwd.getpwnam("mail") if os.getuid() == 0 else pwd.getpwuid(os.getuid())
        ports = f"{self.smtp} : {self.smtps}" if self._tls else self.smtp
        names = {"scratch": self._folder, "ports": ports, "smtps": self.smtps, "pop": self.pop,
                 "pops": self.pops, "pop_host": self.pop_host, "user": self._owner.pw_name,
                 "group": grp.getgrgid(self._owner.pw_gid).gr_name, "locking": self._locking,
                 "ntlm": "ntlm" if has_ntlm() else ""}
        exim, dovecot = EXIM_CONFIGURATION, DOVECOT_CONFIGURATION
        exim_security, dovecot_security = EXIM_WITHOUT_TLS, DOVECOT_WITHOUT_TLS
        if self._tls:
            exim += EXIM_LOGINS
            if has_scram():
                exim += EXIM_SCRAM + (EXIM_NTLM if has_ntlm() else "")
            exim_security, dovecot_security = EXIM_TLS, DOVECOT_TLS
            self._write("server.pem", self._tls.key_pem() + self._tls.pem())
            self._write("passwd", b"joe:{PLAIN}secret\n")
            self._write("ntlm_auth", NTLM_ACCOUNT.encode()).chmod(0o755)
            self._scratch.chmod(0o711)  # Dovecot reads the file as another user
        ownership = "" if os.getuid() == 0 else UNPRIVILEGED
        self._exim = self._write("exim.conf", exim.format(
            **names, security=exim_security.format(**names)).encode())
        self._dovecot = self._write("dovecot.conf", dovecot.format(
            **names, security=dovecot_security.format(**names),
            ownership=ownership.format(**names)).encode())
        for name in ("spool", "home", "Maildir", "Maildir/new", "Maildir/cur", "Maildir/tmp"):
            (self._scratch / name).mkdir()
            self._own(self._scratch / name)
        self._own(self._scratch)

    def _write(self, name, content):
        file = self._scratch / name
        file.write_bytes(content)
        return file

    def _own(self, path):
        if os.getuid() == 0:
            os.chown(path, self._owner.pw_uid, self._owner.pw_gid)

    def _start(self, name, command):
        with open(self._scratch / (name + ".out"), "wb") as output:
            self._processes.append(subprocess.Popen(
                command, stdin=subprocess.DEVNULL, stdout=output, stderr=output))

    def _wait(self, probe):
        deadline = time.monotonic() + PATIENCE
        while True:
            try:
                return probe()
            except OSError:
                if time.monotonic() > deadline:
                    raise RuntimeError("a server does not come up\n" + self._logs()) from None
                time.sleep(0.02)

    def _logs(self):
        files = [*self._scratch.glob("*log"), *self._scratch.glob("*.out")]
        return "\n".join(f"{file.name}: {file.read_text(errors='replace')}" for file in files)
