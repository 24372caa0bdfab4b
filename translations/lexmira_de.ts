<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>Diagnosis</name>
    <message>
        <source>ok</source>
        <translation>ok</translation>
    </message>
    <message>
        <source>warning</source>
        <translation>Warnung</translation>
    </message>
    <message>
        <source>FAIL</source>
        <extracomment>Written in capitals so that it stands out in the table.</extracomment>
        <translation>FEHLER</translation>
    </message>
    <message>
        <source>Component</source>
        <translation>Komponente</translation>
    </message>
    <message>
        <source>Check</source>
        <translation>Prüfung</translation>
    </message>
    <message>
        <source>Verdict</source>
        <translation>Ergebnis</translation>
    </message>
    <message>
        <source>Found</source>
        <translation>Befund</translation>
    </message>
    <message>
        <source>What to do: %1</source>
        <translation>Was zu tun ist: %1</translation>
    </message>
    <message>
        <source>Everything the companion needs works.</source>
        <translation>Alles, was die Companion-App braucht, funktioniert.</translation>
    </message>
    <message numerus="yes">
        <source>Nothing is broken; %n check(s) gave a warning.</source>
        <translation>
            <numerusform>Nichts ist defekt; %n Prüfung hat eine Warnung ergeben.</numerusform>
            <numerusform>Nichts ist defekt; %n Prüfungen haben eine Warnung ergeben.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n check(s) failed: the companion cannot work fully until they are fixed.</source>
        <translation>
            <numerusform>%n Prüfung ist fehlgeschlagen: Bis das behoben ist, funktioniert die Companion-App nicht vollständig.</numerusform>
            <numerusform>%n Prüfungen sind fehlgeschlagen: Bis das behoben ist, funktioniert die Companion-App nicht vollständig.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>ExtensionHealth</name>
    <message>
        <source>Extension host</source>
        <translation>Erweiterungs-Host</translation>
    </message>
    <message>
        <source>Extension broker</source>
        <translation>Erweiterungs-Broker</translation>
    </message>
    <message>
        <source>Extension</source>
        <translation>Erweiterung</translation>
    </message>
    <message>
        <source>installed for</source>
        <translation>installiert für</translation>
    </message>
    <message>
        <source>activatable</source>
        <translation>startbar</translation>
    </message>
    <message>
        <source>browsers connected</source>
        <translation>verbundene Browser</translation>
    </message>
    <message>
        <source>state</source>
        <translation>Zustand</translation>
    </message>
    <message>
        <source>no browser</source>
        <translation>kein Browser</translation>
    </message>
    <message>
        <source>register it with your browser: lexmira-extension-host install --browser B --extension-id ID</source>
        <translation>registriere ihn bei deinem Browser: lexmira-extension-host install --browser B --extension-id ID</translation>
    </message>
    <message>
        <source>%1: manifest %2 is missing</source>
        <translation>%1: Manifest %2 fehlt</translation>
    </message>
    <message>
        <source>install again for that browser: lexmira-extension-host install --browser B --extension-id ID</source>
        <translation>installiere ihn für diesen Browser erneut: lexmira-extension-host install --browser B --extension-id ID</translation>
    </message>
    <message>
        <source>no session bus: %1</source>
        <translation>kein Session-Bus: %1</translation>
    </message>
    <message>
        <source>run it inside your desktop session</source>
        <translation>führe es in deiner Desktop-Sitzung aus</translation>
    </message>
    <message>
        <source>the bus can start it</source>
        <translation>der Bus kann ihn starten</translation>
    </message>
    <message>
        <source>the bus can start it from %1</source>
        <translation>der Bus kann ihn aus %1 starten</translation>
    </message>
    <message>
        <source>%1 is there, but the bus has not read it</source>
        <translation>%1 ist vorhanden, aber der Bus hat die Datei nicht gelesen</translation>
    </message>
    <message>
        <source>the session bus reads its service files when it starts: log out and in again</source>
        <translation>der Session-Bus liest seine Service-Dateien beim Start: Melde dich ab und wieder an</translation>
    </message>
    <message>
        <source>install the companion, which puts com.lexmira.companion.ext.service into share/dbus-1/services, then log out and in again</source>
        <translation>installiere die Companion-App, die com.lexmira.companion.ext.service in share/dbus-1/services ablegt, und melde dich dann ab und wieder an</translation>
    </message>
    <message>
        <source>it runs (process %1), but once it leaves the bus cannot start it again</source>
        <translation>er läuft (Prozess %1), aber sobald er sich beendet, kann der Bus ihn nicht erneut starten</translation>
    </message>
    <message>
        <source>the bus has no service file for com.lexmira.companion.ext</source>
        <translation>der Bus hat keine Service-Datei für com.lexmira.companion.ext</translation>
    </message>
    <message>
        <source>open a browser in which the Lexmira extension is installed</source>
        <translation>öffne einen Browser, in dem die Lexmira-Erweiterung installiert ist</translation>
    </message>
    <message>
        <source>none: the broker is not running</source>
        <translation>keine: Der Broker läuft nicht</translation>
    </message>
    <message>
        <source>process %1 serves the extension&apos;s name but does not list connections (%2)</source>
        <translation>Prozess %1 stellt den Namen der Erweiterung bereit, listet aber keine Verbindungen auf (%2)</translation>
    </message>
    <message>
        <source>nothing if it is a development stand-in; otherwise end process %1 so that the bus starts the broker</source>
        <translation>nichts, falls es ein Platzhalter für die Entwicklung ist; beende sonst Prozess %1, damit der Bus den Broker startet</translation>
    </message>
    <message>
        <source>none: the broker (process %1) runs, no browser is connected</source>
        <translation>keine: Der Broker (Prozess %1) läuft, kein Browser ist verbunden</translation>
    </message>
    <message>
        <source>%1 (extension %2, since %3)</source>
        <translation>%1 (Erweiterung %2, seit %3)</translation>
    </message>
    <message>
        <source>unknown browser</source>
        <translation>unbekannter Browser</translation>
    </message>
    <message>
        <source>not connected, so disabled for the companion</source>
        <translation>nicht verbunden, also für die Companion-App deaktiviert</translation>
    </message>
    <message>
        <source>open a browser in which the Lexmira extension is installed and enabled</source>
        <translation>öffne einen Browser, in dem die Lexmira-Erweiterung installiert und aktiviert ist</translation>
    </message>
    <message>
        <source>process %1 does not answer: %2</source>
        <translation>Prozess %1 antwortet nicht: %2</translation>
    </message>
    <message>
        <source>end process %1; the bus starts a new broker when it is next needed</source>
        <translation>beende Prozess %1; der Bus startet einen neuen Broker, sobald er wieder gebraucht wird</translation>
    </message>
    <message>
        <source>disabled</source>
        <translation>deaktiviert</translation>
    </message>
    <message>
        <source>enable the Lexmira extension on the browser&apos;s extensions page</source>
        <translation>aktiviere die Lexmira-Erweiterung auf der Erweiterungsseite des Browsers</translation>
    </message>
    <message>
        <source>enabled</source>
        <translation>aktiviert</translation>
    </message>
    <message>
        <source>enabled in %1</source>
        <translation>aktiviert in %1</translation>
    </message>
</context>
<context>
    <name>ExtensionPreferences</name>
    <message>
        <source>Could not open extensions settings</source>
        <extracomment>An alert&apos;s title, when the browser&apos;s settings page for the extension cannot be opened.</extracomment>
        <translation>Die Einstellungen der Erweiterung konnten nicht geöffnet werden</translation>
    </message>
    <message>
        <source>OK</source>
        <extracomment>The one button of an alert.</extracomment>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>HealthChecks</name>
    <message>
        <source>Session bus</source>
        <translation>Session-Bus</translation>
    </message>
    <message>
        <source>Shared suite</source>
        <translation>Gemeinsame Suite</translation>
    </message>
    <message>
        <source>Secret Service</source>
        <translation>Secret Service</translation>
    </message>
    <message>
        <source>Settings portal</source>
        <translation>Einstellungsportal</translation>
    </message>
    <message>
        <source>Notification server</source>
        <translation>Benachrichtigungsserver</translation>
    </message>
    <message>
        <source>Account service</source>
        <translation>Kontodienst</translation>
    </message>
    <message>
        <source>Analytics service</source>
        <translation>Analysedienst</translation>
    </message>
    <message>
        <source>Log service</source>
        <translation>Protokolldienst</translation>
    </message>
    <message>
        <source>Configuration</source>
        <translation>Konfiguration</translation>
    </message>
    <message>
        <source>reachable</source>
        <translation>erreichbar</translation>
    </message>
    <message>
        <source>companion instance</source>
        <translation>Companion-Instanz</translation>
    </message>
    <message>
        <source>path</source>
        <translation>Pfad</translation>
    </message>
    <message>
        <source>owner</source>
        <translation>Eigentümer</translation>
    </message>
    <message>
        <source>mode</source>
        <translation>Modus</translation>
    </message>
    <message>
        <source>writable</source>
        <translation>beschreibbar</translation>
    </message>
    <message>
        <source>watchable</source>
        <translation>überwachbar</translation>
    </message>
    <message>
        <source>default collection</source>
        <translation>Standardsammlung</translation>
    </message>
    <message>
        <source>unlocked</source>
        <translation>entsperrt</translation>
    </message>
    <message>
        <source>address</source>
        <translation>Adresse</translation>
    </message>
    <message>
        <source>name resolves</source>
        <translation>Name auflösbar</translation>
    </message>
    <message>
        <source>accepts connections</source>
        <translation>nimmt Verbindungen an</translation>
    </message>
    <message>
        <source>TLS verified</source>
        <translation>TLS geprüft</translation>
    </message>
    <message>
        <source>time to first byte</source>
        <translation>Zeit bis zum ersten Byte</translation>
    </message>
    <message>
        <source>services.json</source>
        <translation>services.json</translation>
    </message>
    <message>
        <source>not reachable, and DBUS_SESSION_BUS_ADDRESS is not set: %1</source>
        <translation>nicht erreichbar, und DBUS_SESSION_BUS_ADDRESS ist nicht gesetzt: %1</translation>
    </message>
    <message>
        <source>not reachable at %1: %2</source>
        <translation>unter %1 nicht erreichbar: %2</translation>
    </message>
    <message>
        <source>run the companion inside your desktop session, or set DBUS_SESSION_BUS_ADDRESS to the session&apos;s bus</source>
        <translation>starte die Companion-App in deiner Desktop-Sitzung oder setze DBUS_SESSION_BUS_ADDRESS auf den Bus der Sitzung</translation>
    </message>
    <message>
        <source>the default bus</source>
        <translation>der Standardbus</translation>
    </message>
    <message>
        <source>running as process %1; a new launch hands over to it</source>
        <translation>läuft als Prozess %1; ein neuer Start übergibt an ihn</translation>
    </message>
    <message>
        <source>none running</source>
        <translation>keine läuft</translation>
    </message>
    <message>
        <source>%1 does not exist yet</source>
        <translation>%1 existiert noch nicht</translation>
    </message>
    <message>
        <source>nothing, unless it stays missing: the companion or the extension creates it when it first stores a value</source>
        <translation>nichts, es sei denn, es fehlt dauerhaft: Die Companion-App oder die Erweiterung legt es an, sobald sie zum ersten Mal einen Wert speichert</translation>
    </message>
    <message>
        <source>%1 is not a directory</source>
        <translation>%1 ist kein Verzeichnis</translation>
    </message>
    <message>
        <source>move %1 out of the way</source>
        <translation>verschiebe %1 woandershin</translation>
    </message>
    <message>
        <source>you (uid %1)</source>
        <translation>du (uid %1)</translation>
    </message>
    <message>
        <source>uid %1, not you (uid %2)</source>
        <translation>uid %1, nicht du (uid %2)</translation>
    </message>
    <message>
        <source>make it yours: chown -R %1 &quot;%2&quot;</source>
        <translation>mach dich zum Eigentümer: chown -R %1 &quot;%2&quot;</translation>
    </message>
    <message>
        <source>chmod 700 &quot;%1&quot;</source>
        <translation>chmod 700 &quot;%1&quot;</translation>
    </message>
    <message>
        <source>%1: you cannot read, write or enter it</source>
        <translation>%1: Du kannst es weder lesen noch beschreiben noch betreten</translation>
    </message>
    <message>
        <source>%1: other users can change the state shared with the extension</source>
        <translation>%1: Andere Benutzer können den mit der Erweiterung geteilten Zustand ändern</translation>
    </message>
    <message>
        <source>%1: other users can read the state shared with the extension</source>
        <translation>%1: Andere Benutzer können den mit der Erweiterung geteilten Zustand lesen</translation>
    </message>
    <message>
        <source>fix its owner and mode, and make sure its file system is mounted writable and not full</source>
        <translation>korrigiere Eigentümer und Modus und stelle sicher, dass das Dateisystem beschreibbar eingehängt und nicht voll ist</translation>
    </message>
    <message>
        <source>a file was written and removed</source>
        <translation>eine Datei wurde geschrieben und wieder entfernt</translation>
    </message>
    <message>
        <source>inotify cannot watch it: %1</source>
        <translation>inotify kann es nicht überwachen: %1</translation>
    </message>
    <message>
        <source>raise fs.inotify.max_user_instances and fs.inotify.max_user_watches (sysctl), or close programs that use up inotify watches</source>
        <translation>erhöhe fs.inotify.max_user_instances und fs.inotify.max_user_watches (sysctl) oder schließe Programme, die inotify-Überwachungen aufbrauchen</translation>
    </message>
    <message>
        <source>inotify watches it</source>
        <translation>inotify überwacht es</translation>
    </message>
    <message>
        <source>start a Secret Service in your session (for example gnome-keyring-daemon --components=secrets)</source>
        <translation>starte einen Secret Service in deiner Sitzung (zum Beispiel gnome-keyring-daemon --components=secrets)</translation>
    </message>
    <message>
        <source>answers</source>
        <translation>antwortet</translation>
    </message>
    <message>
        <source>there is none</source>
        <translation>es gibt keine</translation>
    </message>
    <message>
        <source>create a keyring and make it the default one in your keyring manager</source>
        <translation>lege in deiner Schlüsselbundverwaltung einen Schlüsselbund an und mach ihn zum Standard</translation>
    </message>
    <message>
        <source>unlock the default keyring in your keyring manager, or log in again</source>
        <translation>entsperre den Standardschlüsselbund in deiner Schlüsselbundverwaltung oder melde dich erneut an</translation>
    </message>
    <message>
        <source>cannot tell: %1</source>
        <translation>nicht feststellbar: %1</translation>
    </message>
    <message>
        <source>the default collection is locked</source>
        <translation>die Standardsammlung ist gesperrt</translation>
    </message>
    <message>
        <source>yes</source>
        <translation>ja</translation>
    </message>
    <message>
        <source>install xdg-desktop-portal and a backend for your desktop; until then the window stays light</source>
        <translation>installiere xdg-desktop-portal und ein Backend für deinen Desktop; bis dahin bleibt das Fenster hell</translation>
    </message>
    <message>
        <source>run a notification server in your session; until then the reminder to enable the extension is not shown</source>
        <translation>starte einen Benachrichtigungsserver in deiner Sitzung; bis dahin wird die Erinnerung, die Erweiterung zu aktivieren, nicht angezeigt</translation>
    </message>
    <message>
        <source>&quot;%1&quot; names no usable host</source>
        <translation>„%1“ nennt keinen verwendbaren Host</translation>
    </message>
    <message>
        <source>correct %1, or the bundle&apos;s services.json</source>
        <translation>korrigiere %1 oder die services.json des Bundles</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>check the network connection and the name servers, or correct %1</source>
        <translation>prüfe die Netzwerkverbindung und die Nameserver oder korrigiere %1</translation>
    </message>
    <message>
        <source>%1:%2: %3</source>
        <translation>%1:%2: %3</translation>
    </message>
    <message>
        <source>check that the service runs and that no firewall or proxy blocks port %1, or correct %2</source>
        <translation>prüfe, ob der Dienst läuft und weder eine Firewall noch ein Proxy Port %1 blockiert, oder korrigiere %2</translation>
    </message>
    <message>
        <source>check the clock; if a proxy or a private authority signs the service&apos;s certificate, name that authority&apos;s PEM file in LEXMIRA_EXTRA_CA_FILE</source>
        <translation>prüfe die Uhr; wenn ein Proxy oder eine private Zertifizierungsstelle das Zertifikat des Dienstes signiert, gib die PEM-Datei dieser Stelle in LEXMIRA_EXTRA_CA_FILE an</translation>
    </message>
    <message>
        <source>handshake in %1 ms</source>
        <translation>Handshake in %1 ms</translation>
    </message>
    <message>
        <source>the service accepts connections but does not answer: ask its operators</source>
        <translation>der Dienst nimmt Verbindungen an, antwortet aber nicht: Wende dich an seine Betreiber</translation>
    </message>
    <message>
        <source>%1 ms (%2)</source>
        <translation>%1 ms (%2)</translation>
    </message>
    <message>
        <source>the network or the service is slow; the companion will be slow to sign in</source>
        <translation>das Netzwerk oder der Dienst ist langsam; die Companion-App wird sich nur langsam anmelden</translation>
    </message>
    <message>
        <source>reinstall the companion, or point LEXMIRA_BUNDLE_DIR at a complete bundle</source>
        <translation>installiere die Companion-App neu oder lass LEXMIRA_BUNDLE_DIR auf ein vollständiges Bundle zeigen</translation>
    </message>
</context>
<context>
    <name>ModalAlertPresenter</name>
    <message>
        <source>OK</source>
        <extracomment>The button of an alert that names none.</extracomment>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>OAuth</name>
    <message>
        <source>Lexmira encountered a problem</source>
        <extracomment>The title of the alert shown when the sign-in cannot be handed to the extension.</extracomment>
        <translation>Bei Lexmira ist ein Problem aufgetreten</translation>
    </message>
    <message>
        <source>Please open Safari to continue using Lexmira.</source>
        <extracomment>The alert&apos;s text. &quot;Safari&quot; is replaced by the name of the browser the extension runs in, so keep the word &quot;Safari&quot; where that name goes.</extracomment>
        <translation>Bitte öffne Safari, um Lexmira weiter zu verwenden.</translation>
    </message>
    <message>
        <source>OK</source>
        <extracomment>The one button of an alert.</extracomment>
        <translation>OK</translation>
    </message>
</context>
<context>
    <name>lexmira::AboutPanel</name>
    <message>
        <source>About %1</source>
        <translation>Über %1</translation>
    </message>
    <message>
        <source>Version %1</source>
        <translation>Version %1</translation>
    </message>
</context>
<context>
    <name>lexmira::EnableExtensionNotification</name>
    <message>
        <source>Lexmira is disabled</source>
        <extracomment>The reminder notification&apos;s title.</extracomment>
        <translation>Lexmira ist deaktiviert</translation>
    </message>
    <message>
        <source>Click Open to enable it in Safari settings</source>
        <extracomment>The reminder notification&apos;s text. &quot;Open&quot; is its button; &quot;Safari&quot; is replaced by the name of the browser the extension runs in, so keep the word &quot;Safari&quot; where that name goes.</extracomment>
        <translation>Klicke auf „Öffnen“, um Lexmira in den Einstellungen von Safari zu aktivieren</translation>
    </message>
    <message>
        <source>Open</source>
        <extracomment>The reminder notification&apos;s button: it opens the extension&apos;s settings.</extracomment>
        <translation>Öffnen</translation>
    </message>
</context>
<context>
    <name>lexmira::EnableExtensionView</name>
    <message>
        <source>You’re all set! </source>
        <extracomment>The enabled panel&apos;s title. The trailing blank keeps the check mark that follows at its place.</extracomment>
        <translation>Alles bereit! </translation>
    </message>
    <message>
        <source>If you don’t see Lexmira in your 
Safari toolbar, try restarting Safari.</source>
        <extracomment>The enabled panel&apos;s text, two lines. &quot;Safari&quot; stands for the browser the extension runs in and is replaced by its name (&quot;Chromium&quot;, &quot;Firefox&quot;, ...); keep the word &quot;Safari&quot; where that name goes.</extracomment>
        <translation>Wenn du Lexmira nicht in der Symbolleiste 
von Safari siehst, starte Safari neu.</translation>
    </message>
    <message>
        <source>Ok, got it</source>
        <extracomment>The enabled panel&apos;s button, 96 pixels wide: it hands the user over to the browser.</extracomment>
        <translation>Verstanden</translation>
    </message>
    <message>
        <source>1
2</source>
        <extracomment>The numbers of the two steps, one per line, drawn in a column of their own.</extracomment>
        <translation>1
2</translation>
    </message>
    <message>
        <source>.
.</source>
        <extracomment>The full stops after the step numbers, one per line.</extracomment>
        <translation>.
.</translation>
    </message>
    <message>
        <source>Open settings
Click checkbox
</source>
        <extracomment>The two steps, one per line; the third line is continued by the next text. Each line must stay narrower than about 230 pixels in the 24-pixel bold font.</extracomment>
        <translation>Öffne Einstellungen
Setze das Häkchen
</translation>
    </message>
    <message>
        <source>

to grant permission </source>
        <extracomment>The third line of the steps, below &quot;Click checkbox&quot; (the two line breaks skip the steps).</extracomment>
        <translation>

zur Freigabe </translation>
    </message>
    <message>
        <source>1. Open settings. 2. Click checkbox to grant permission.</source>
        <extracomment>What a screen reader reads for the steps: one sentence, in order.</extracomment>
        <translation>1. Öffne Einstellungen. 2. Setze das Häkchen zur Freigabe.</translation>
    </message>
    <message>
        <source>Open settings to enable Lexmira</source>
        <extracomment>The disabled panel&apos;s button, 244 pixels wide: it opens the browser&apos;s settings page for the extension.</extracomment>
        <translation>Zum Aktivieren Einstellungen öffnen</translation>
    </message>
    <message>
        <source>Opening...</source>
        <extracomment>The settings button&apos;s title while the settings page is being opened.</extracomment>
        <translation>Wird geöffnet …</translation>
    </message>
    <message>
        <source>Could not open Safari</source>
        <extracomment>An alert&apos;s title. &quot;Safari&quot; is replaced by the name of the browser the extension runs in.</extracomment>
        <translation>Safari konnte nicht geöffnet werden</translation>
    </message>
    <message>
        <source>OK</source>
        <extracomment>The one button of an alert.</extracomment>
        <translation>OK</translation>
    </message>
    <message>
        <source>Lexmira</source>
        <extracomment>Spoken names of the panels&apos; images.</extracomment>
        <translation>Lexmira</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>Warnung</translation>
    </message>
    <message>
        <source>How to enable Lexmira</source>
        <translation>So aktivierst du Lexmira</translation>
    </message>
</context>
<context>
    <name>lexmira::MainMenu</name>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Window</source>
        <translation>Fenster</translation>
    </message>
    <message>
        <source>About %1</source>
        <translation>Über %1</translation>
    </message>
    <message>
        <source>Quit %1</source>
        <translation>%1 beenden</translation>
    </message>
    <message>
        <source>Open…</source>
        <translation>Öffnen …</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Minimize</source>
        <translation>Minimieren</translation>
    </message>
    <message>
        <source>Bring All to Front</source>
        <translation>Alle nach vorne bringen</translation>
    </message>
</context>
</TS>
