"""Running the commands that the Python tests are made of."""
import os
import subprocess


def run(*command, env=None, **options):
    """Runs a command with `env` on top of the environment; returns what it prints.

    Fails with all of it if the command does.
    """
    words = [str(word) for word in command]
    done = subprocess.run(words, env={**os.environ, **(env or {})}, text=True, check=False,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)
    assert done.returncode == 0, f"{' '.join(words)}\n{done.stdout}"
    return done.stdout
