<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>AboutPanel</name>
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
    <name>EnableExtensionNotification</name>
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
    <name>EnableExtensionView</name>
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
    <name>MainMenu</name>
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
</TS>
